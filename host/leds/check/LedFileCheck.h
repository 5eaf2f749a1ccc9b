#pragma once

#include <vector>

#include "leds/check/LedFindings.h"
#include "profile/Profile.h"

namespace board {

/// Finds files of LED tables that do not fit together: two for one mask, two masks for one file,
/// masks of no or several LEDs, and files that are devices of `leds` too. Compares paths as they
/// are written and opens nothing; a path and the name "led:NAME" of the same LED are equal.
void checkLedFiles(const LedSequencerProfile& tables, const std::vector<LedDeviceProfile>& leds,
                   LedFindings& findings);

} // namespace board
