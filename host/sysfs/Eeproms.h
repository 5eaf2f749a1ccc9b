#pragma once

#include <string>
#include <vector>

#include "base/Result.h"

namespace board {

/// A memory that keeps its content without power.
struct Eeprom {
    std::string file;       ///< holds its bytes
    Result<long long> size; ///< in bytes
    std::string type;       ///< the kernel's word, such as "EEPROM" or "OTP"; may be empty
};

/// Those with a file of their own on an I2C or SPI bus, then the others that the kernel lists as
/// memories (nvmem). One with both has the first kind of path. None is opened.
std::vector<Eeprom> eepromsOf(const std::string& sysfs);

} // namespace board
