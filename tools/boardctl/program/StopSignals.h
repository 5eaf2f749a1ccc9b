#pragma once

#include <chrono>
#include <optional>

namespace boardctl {

/// Handles SIGINT, SIGTERM and SIGHUP for the whole program.
///
/// The signals don't end the program directly, so a command always restores and removes what it
/// must. But they interrupt a waiting system call, so a blocked device can't keep the program from
/// exiting. Each signal asks the running command to end, except SIGHUP if it was ignored when the
/// program started, as nohup arranges. A second signal, half a second later or more, ends the
/// program at once, unless the command has noticed the first one and is already cleaning up. While
/// a command restores a device, it blocks the signals (board::EndingSignalsHeld).
class StopSignals {
public:
    using Clock = std::chrono::steady_clock;

    static Clock::duration spanOf(double seconds) {
        return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    }
    /// The time `seconds` from now; empty if `seconds` is empty.
    static std::optional<Clock::time_point> endAfter(std::optional<double> seconds) {
        return seconds ? std::optional(Clock::now() + spanOf(*seconds)) : std::nullopt;
    }

    /// Installs the handlers. Called once, before any thread exists.
    static void install();

    /// Waits until `end` (forever without one) or until `descriptor`, if not -1, is readable.
    /// Returns true if the program was asked to end, even before the call.
    static bool waitUntil(std::optional<Clock::time_point> end, int descriptor = -1);
    /// Waits until `descriptor` is writable. Returns false if the program is asked to end first: a
    /// blocked reader must not keep the program from exiting.
    static bool waitWritable(int descriptor);
    /// Whether `descriptor` is writable now.
    static bool isWritable(int descriptor);

    /// Whether the program was asked to end.
    static bool isAsked();

    /// Declares that a signal is the usual way to end this command, such as a host. Then a signal
    /// does not change the exit status.
    static void expectAsEnd();
    /// The exit status of the program after its command returned `status`: BY_SIGNAL + N if signal
    /// N asked it to end and the command did not expect that, otherwise `status`.
    static int statusAfter(int status);
    static bool waitFor(Clock::duration span) { return waitUntil(Clock::now() + span); }
};

} // namespace boardctl
