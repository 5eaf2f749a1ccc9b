#pragma once

#include "RTD.h"
#include "base/Events.h"

namespace board {

/// As long as it exists, turns the library's log lines and its reports to the event monitor into
/// events. Reports and errors become FaultReport events. Other lines become LogLine events, up to
/// the level in BOARD_LOG_LEVEL.
class EventTap : private RTD::LogSink, private RTD::Monitor {
public:
    /// `queue` must outlive the object.
    explicit EventTap(EventQueue& queue);
    /// Restores the previous log sink and event monitor.
    ~EventTap() override;

private:
    void write(const String& category, int level, const String& text) override;
    void report(int level, const String& text) override;

    EventQueue& m_queue;
    const int m_level;
    RTD::LogSink* const m_formerSink;
    RTD::Monitor* const m_formerMonitor;
};

} // namespace board
