#pragma once

#include <string>

#include "program/StopSignals.h"

namespace boardctl {

/// Shows a waiting user what a command is doing: after one second, a line on standard error, which
/// is updated every second. Prints nothing if standard error is not a terminal.
class Progress {
public:
    /// `span` is how long the whole command takes, in seconds.
    explicit Progress(double span);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Waits until `end` and shows `what` meanwhile. Returns true if the program was asked to end.
    bool waitUntil(StopSignals::Clock::time_point end, const std::string& what);

    /// Erases the line. Call it before anything else is printed.
    void clear();

private:
    const bool m_isShown;
    const double m_span; ///< in seconds
    const StopSignals::Clock::time_point m_start = StopSignals::Clock::now();
    bool m_isDirty = false;
};

} // namespace boardctl
