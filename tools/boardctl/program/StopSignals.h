#pragma once

#include <chrono>
#include <optional>

namespace boardctl {

/// SIGINT, SIGTERM and SIGHUP, taken in one place for the whole program.
///
/// They end nothing by themselves, so that every way out of a command puts back and removes what it
/// must; but they interrupt a system call that waits, so that no device can keep the program.
/// SIGINT and SIGTERM ask a command that goes on to end. SIGHUP asks for nothing: what should
/// outlive its terminal does.
class StopSignals {
public:
    using Clock = std::chrono::steady_clock;

    static Clock::duration spanOf(double seconds) {
        return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    }
    /// `seconds` from now; none without `seconds`.
    static std::optional<Clock::time_point> endAfter(std::optional<double> seconds) {
        return seconds ? std::optional(Clock::now() + spanOf(*seconds)) : std::nullopt;
    }

    /// Takes the signals from now on. Called once, before any thread exists.
    static void install();

    /// Waits until `end`, for ever without one, or until `descriptor`, if not -1, can be read. True
    /// where the program was asked to end, also before the call.
    static bool waitUntil(std::optional<Clock::time_point> end, int descriptor = -1);
    /// Waits until something can be written to `descriptor`. False where the program is asked to
    /// end before: who reads there must not keep it.
    static bool waitWritable(int descriptor);

    /// Whether the program was asked to end.
    static bool isAsked();
    static bool waitFor(Clock::duration span) { return waitUntil(Clock::now() + span); }
};

} // namespace boardctl
