#pragma once

#include <string>

#include "program/StopSignals.h"

namespace boardctl {

/// What a command is about, for somebody who waits for it: one line on standard error from its
/// second second on, where that is a terminal. Elsewhere nothing.
class Progress {
public:
    /// `span` is how long all of it takes.
    explicit Progress(double span);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Waits until `end` and shows `what` goes on meanwhile. True where the program was asked to
    /// end.
    bool waitUntil(StopSignals::Clock::time_point end, const std::string& what);

    /// Takes the line away, before something else is printed.
    void clear();

private:
    const bool m_isShown;
    const double m_span; ///< in seconds
    const StopSignals::Clock::time_point m_start = StopSignals::Clock::now();
    bool m_isDirty = false;
};

} // namespace boardctl
