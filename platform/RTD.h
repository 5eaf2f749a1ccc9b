#pragma once

#include <atomic>

#include "String.h"

namespace RTD {

/// Where log lines go. Called on any thread, also on several at once.
class LogSink {
public:
    virtual ~LogSink();
    virtual void write(const String& category, int level, const String& text) = 0;
};

/// The event monitor: takes reports of events that somebody should look at. Called on any thread.
class Monitor {
public:
    virtual ~Monitor();
    virtual void report(int level, const String& text) = 0;
};

/// Logs one line; a lower level is graver (3 errors, 7 tracing). Without a sink of the host's,
/// lines of level 3 and below, or up to the number in the environment variable BOARD_LOG_LEVEL, go
/// to standard error.
void VSYSLOG(const String& category, int level, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/// Sends log lines to `sink`; null restores standard error. Returns the former one. Not owned: a
/// sink must live until no thread logs any more.
LogSink* SET_LOG_SINK(LogSink* sink);

} // namespace RTD

/// The event monitor; null means that there is none. Set by the host, not owned.
extern std::atomic<RTD::Monitor*> MON_EVENT;
