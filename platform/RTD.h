#pragma once

#include <atomic>

#include "String.h"

namespace RTD {

/// Receives log lines. Any thread may call it, even several at once.
class LogSink {
public:
    virtual ~LogSink();
    virtual void write(const String& category, int level, const String& text) = 0;
};

/// The event monitor: receives reports of events that need attention. Any thread may call it.
class Monitor {
public:
    virtual ~Monitor();
    virtual void report(int level, const String& text) = 0;
};

/// Logs one line. A lower level is more severe (3 is an error, 7 a trace). Unless the host sets a
/// sink, lines up to level 3, or up to the number in the environment variable BOARD_LOG_LEVEL, go
/// to standard error.
void VSYSLOG(const String& category, int level, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/// Sends log lines to `sink`; null restores standard error. Returns the previous sink. The sink is
/// not owned and must exist until no thread can log to it any more.
LogSink* SET_LOG_SINK(LogSink* sink);

} // namespace RTD

/// The event monitor, set and owned by the host; null means that there is none.
extern std::atomic<RTD::Monitor*> MON_EVENT;
