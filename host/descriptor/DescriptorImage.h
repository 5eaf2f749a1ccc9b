#pragma once

#include <string>

#include "TString.h"

namespace board {

/// The largest image that is taken or made: 64 KiB, the reach of a chunk's length.
constexpr unsigned MAX_IMAGE_SIZE = 65536;

/// The bytes of a descriptor image in a file, a pipe or a device.
TString<char> readImage(const std::string& path);

} // namespace board
