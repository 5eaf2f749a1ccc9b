#pragma once

#include <string>

namespace board {

/// What the firmware image says of itself.
struct FirmwareReading {
    std::string version;
    std::string line1, line2, line3, line6, line7, line8;
    std::string fault; ///< why nothing is known; empty where something is
};

/// Reads the information file; a pipe in its place, which would keep a reader waiting, is a fault.
FirmwareReading readFirmware(const std::string& path);

} // namespace board
