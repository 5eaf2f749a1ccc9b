#pragma once

#include <stdexcept>

namespace board {

/// Something that a person must mend: one line that says what, where and what was expected.
class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace board
