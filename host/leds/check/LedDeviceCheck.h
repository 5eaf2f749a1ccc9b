#pragma once

#include <vector>

#include "leds/check/LedFindings.h"
#include "profile/Profile.h"
#include "sysfs/DeviceLocator.h"

namespace board {

/// Whether this machine can be the one that the tables are for: false if they name LEDs of the
/// kernel only, and none of them is here.
bool mayHaveLeds(const LedSequencerProfile& tables, const DeviceLocator& locator);

/// What is wrong with the LEDs' files on this machine: whether each exists, is a file that a
/// sequencer can write to, may be written, and reaches the brightness that means lit. Opens nothing
/// for writing. Nothing is wrong if the tables' access is not by files.
std::vector<LedFinding> checkLedDevices(const LedSequencerProfile& tables,
                                        const DeviceLocator& locator);

} // namespace board
