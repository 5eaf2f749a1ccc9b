#pragma once

#include <vector>

#include "leds/check/LedFindings.h"
#include "profile/Profile.h"

namespace board {

/// Finds files of LED tables that do not fit together: two files with one mask, one file with two
/// masks, masks of no LED or of several, and files that are devices of `leds` too. Compares paths
/// as they are written and opens nothing. An LED's path and its name "led:NAME" count as equal.
void checkLedFiles(const LedSequencerProfile& tables, const std::vector<LedDeviceProfile>& leds,
                   LedFindings& findings);

} // namespace board
