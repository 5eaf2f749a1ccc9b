#pragma once

#include <stdexcept>

namespace board {

/// A problem that the user has to fix. The message is one line: where the problem is, what is
/// wrong, and what was expected.
class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace board
