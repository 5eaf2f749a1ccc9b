#pragma once

#include <functional>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

#include "base/Error.h"

namespace boardctl {

/// Exit statuses that scripts rely on. If signal N ends a command, the status is BY_SIGNAL + N.
enum ExitStatus : int {
    DONE = 0,
    FAILED = 1,
    WRONG_CALL = 2,
    FOUND = 3,    ///< the command looked and found something wrong
    DECLINED = 4, ///< the user said no, or there was no terminal to ask on
    BY_SIGNAL = 128
};

/// The parsed command line: what all commands share.
struct Options {
    std::string board; ///< path of the profile; empty if the call names none
    bool sim = false;  ///< work on a simulated board, made for the call
    bool json = false;
    bool metrics = false; ///< only for `info` and `status`
    bool svg = false;     ///< only for `leds preview`
    bool html = false;    ///< only for `leds preview`

    /// How long `bd` waits for the lock of a file or device; empty: the default.
    std::optional<double> lockSeconds;

    /// The words of the command line. Only commands that occur in this set get parsers; if the set
    /// is empty, every command gets one.
    std::set<std::string_view> words;

    /// Runs the command and returns the exit status. Set while the command line is parsed.
    std::function<int()> command;
};

/// Thrown if the command line could be parsed but the call is still wrong. The program prints the
/// usage and exits with 2.
struct WrongCall : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Thrown if the user does not allow the command to go on. The program exits with 4.
struct Declined : board::Error {
    using Error::Error;
};

} // namespace boardctl
