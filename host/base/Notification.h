#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace board {

/// Reports the state of the process, such as "READY=1", "STATUS=..." or "WATCHDOG=1", to the init
/// system through the socket that the environment variable NOTIFY_SOCKET names. Does nothing if the
/// variable is unset or empty. Throws Error if the message can't be sent.
void notifyInitSystem(const std::string& state);

/// For a process that sends messages to the init system as long as it runs. A message may fail
/// because the init system is busy. The process must go on sending even then, because the init
/// system ends a silent process. One thread at a time.
class InitSystem {
public:
    /// Like notifyInitSystem, but does not throw. Returns the fault if the message can't be sent,
    /// unless the message before it failed too. A "READY=1" that failed is sent again with each
    /// later message until one of them is sent.
    std::optional<std::string> tell(const std::string& state);

private:
    std::string m_unsaid;
    bool m_wasHeard = true;
};

/// The longest time that the init system allows between two "WATCHDOG=1" messages, from the
/// variables WATCHDOG_USEC and WATCHDOG_PID; empty if it expects no such message.
std::optional<std::chrono::microseconds> watchdogPeriod();

/// Whether the open file is the init system's journal, which the variable JOURNAL_STREAM names. In
/// the journal, "<3>" at the start of a line marks an error.
bool isJournal(int descriptor);

} // namespace board
