#pragma once

#include <string>

#include "sysfs/DeviceLocator.h"

namespace board {

/// A profile (TOML) of what the kernel lists on this machine, to start from: fans, temperatures,
/// LEDs and an EEPROM for the descriptor. BoardCheck finds nothing wrong with it. A device that it
/// can't use, or about which something is not known, is a comment with the reason.
///
/// Reads the devices, and up to 64 KiB of each EEPROM on an I2C or SPI bus.
std::string starterProfile(const DeviceLocator& locator);

} // namespace board
