#pragma once

#include <vector>

#include "profile/Profile.h"
#include "profile/ProfileError.h"

namespace board {

/// The mistakes in a board's LED tables, in the profile's order. The sequencer accepts such tables,
/// but they do nothing or not what was intended.
std::vector<ProfileFault> checkLeds(const LedSequencerProfile& profile);

} // namespace board
