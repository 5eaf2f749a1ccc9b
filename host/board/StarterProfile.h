#pragma once

#include <string>

#include "sysfs/DeviceLocator.h"

namespace board {

/// A profile (TOML) to start from, with the devices that the kernel lists on this machine: fans,
/// temperature sensors, LEDs and an EEPROM for the descriptor. BoardCheck finds nothing wrong with
/// the profile. A device that a profile can't use, or of which something is not known, becomes a
/// comment with the reason.
///
/// Reads the devices. Also reads EEPROMs of at most 64 KiB until BoardCheck accepts one as the
/// descriptor's device.
std::string starterProfile(const DeviceLocator& locator);

} // namespace board
