#pragma once

#include <string>
#include <vector>

#include "profile/Profile.h"

namespace board {

/// The mistakes in a board's LED tables, in the profile's order. Each is a line "FILE:LINE: KEY:
/// what is wrong". The sequencer accepts such tables, but they do nothing or not what was intended.
std::vector<std::string> checkLeds(const LedSequencerProfile& profile);

} // namespace board
