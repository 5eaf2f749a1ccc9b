#pragma once

#include <vector>

#include "leds/check/LedFindings.h"
#include "profile/Profile.h"

namespace board {

/// What is wrong with a board's LED tables, in the profile's order; nothing if it has none. The
/// sequencer accepts such tables, but they do nothing or not what was intended. Each finding says
/// what the board would show. Looks at no device.
std::vector<LedFinding> checkLeds(const Profile& profile);

} // namespace board
