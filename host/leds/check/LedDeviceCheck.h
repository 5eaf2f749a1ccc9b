#pragma once

#include <vector>

#include "leds/check/LedFindings.h"
#include "profile/Profile.h"
#include "sysfs/DeviceLocator.h"

namespace board {

/// Whether the tables may be for this machine: false if they name only kernel LEDs, and this
/// machine has none of them.
bool mayHaveLeds(const LedSequencerProfile& tables, const DeviceLocator& locator);

/// Finds LED files on this machine that are missing, of the wrong kind or not writable, or whose
/// maximum does not suit the brightness that means lit. Opens nothing for writing. Finds nothing if
/// the tables don't use file access.
std::vector<LedFinding> checkLedDevices(const LedSequencerProfile& tables,
                                        const DeviceLocator& locator);

} // namespace board
