#pragma once

#include <functional>
#include <stdexcept>
#include <string>

namespace boardctl {

/// Exit statuses that scripts rely on.
enum ExitStatus : int { DONE = 0, FAILED = 1, WRONG_CALL = 2 };

/// The parsed command line: what all commands share.
struct Options {
    std::string board; ///< path of the profile; empty: a simulated board made for the call
    bool json = false;
    bool metrics = false; ///< only for `info`
    bool svg = false;     ///< only for `leds preview`

    /// Runs the command and returns the exit status. Set while the command line is parsed.
    std::function<int()> command;
};

/// Thrown if the words are well formed but make no sense together. The program prints the usage and
/// exits with 2.
struct WrongCall : std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace boardctl
