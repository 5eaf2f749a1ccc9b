#pragma once

#include <string>

#include "base/Result.h"
#include "profile/NamedPath.h"

namespace board {

/// What the firmware image's information file contains.
struct FirmwareInfo {
    std::string version;
    std::string line1, line2, line3, line6, line7, line8;
};

/// Reads the information file. Returns a fault if the file is a folder, or a pipe, which would
/// block the reader; also if the first line is empty, or if one of the first eight lines has bytes
/// that are not text.
Result<FirmwareInfo> readFirmware(const std::string& path);

/// The same for the file that a profile names. A fault begins with the place in the profile.
Result<FirmwareInfo> readFirmware(const NamedPath& file);

} // namespace board
