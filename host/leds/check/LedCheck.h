#pragma once

#include <vector>

#include "leds/check/LedFindings.h"
#include "profile/Profile.h"

namespace board {

/// Finds mistakes in a board's LED tables, in the profile's order; none if there are no tables. The
/// sequencer accepts entries with mistakes, but they have no effect or not the intended one. Each
/// finding says what the board would show. Looks at no device.
std::vector<LedFinding> checkLeds(const Profile& profile);

} // namespace board
