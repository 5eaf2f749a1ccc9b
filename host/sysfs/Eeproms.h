#pragma once

#include <string>
#include <vector>

#include "base/Result.h"

namespace board {

/// A memory that keeps its content without power.
struct Eeprom {
    std::string file;       ///< the path of its content
    Result<long long> size; ///< in bytes
    std::string type;       ///< the kernel's word, such as "EEPROM" or "OTP"; may be empty
};

/// First the devices on an I2C or SPI bus that have a file `eeprom`, then the other memories that
/// the kernel lists (nvmem). A memory of both kinds is listed once, as the first kind. Opens none
/// of them.
std::vector<Eeprom> eepromsOf(const std::string& sysfs);

} // namespace board
