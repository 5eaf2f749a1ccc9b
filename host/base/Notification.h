#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace board {

/// Reports the state of the process, such as "READY=1", "STATUS=..." or "WATCHDOG=1", to the init
/// system through the socket that the environment variable NOTIFY_SOCKET names. Does nothing if the
/// variable is unset or empty. Throws Error if the message can't be sent.
void notifyInitSystem(const std::string& state);

/// The init system, for a process that tells it something again and again. It may be too busy for a
/// message once, but it ends a process that is then silent. One thread at a time.
class InitSystem {
public:
    /// As notifyInitSystem, but returns the fault if the message can't be sent and the one before
    /// could be. "READY=1" is said again with the next message until it has been sent.
    std::optional<std::string> tell(const std::string& state);

private:
    std::string m_unsaid;
    bool m_wasHeard = true;
};

/// How often the init system expects "WATCHDOG=1" at least; empty if it does not. The variables
/// WATCHDOG_USEC and WATCHDOG_PID say so.
std::optional<std::chrono::microseconds> watchdogPeriod();

/// Whether what is written to the open file goes to the init system's journal, which takes "<3>" at
/// the start of a line for the priority of an error. The variable JOURNAL_STREAM names that file.
bool isJournal(int descriptor);

} // namespace board
