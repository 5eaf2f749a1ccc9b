#pragma once

#include <string>

#include "TString.h"

namespace board {

/// The largest image that is taken or made: 64 KiB, the reach of a chunk's length.
constexpr unsigned MAX_IMAGE_SIZE = 65536;

/// A file's bytes, `limit` at most. Throws Error with path and reason where it can't be read, is larger, or
/// a signal that the program handles interrupts the wait for it.
std::string readFile(const std::string& path, std::size_t limit);

/// The bytes of a descriptor image in a file, a pipe or a device.
TString<char> readImage(const std::string& path);

} // namespace board
