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

/// Reads the information file. A pipe is a fault, because it would block the reader, and so is a
/// folder. Bytes in the first eight lines that are not text are a fault too, and so is an empty
/// first line.
Result<FirmwareInfo> readFirmware(const std::string& path);

/// The same for the file that a profile names. A fault begins with the place in the profile.
Result<FirmwareInfo> readFirmware(const NamedPath& file);

} // namespace board
