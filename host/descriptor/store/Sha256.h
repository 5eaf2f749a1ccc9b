#pragma once

#include <string>

namespace board {

/// The SHA-256 of `bytes` in 64 lower-case hexadecimal digits, as sha256sum prints it.
std::string sha256(const std::string& bytes);

} // namespace board
