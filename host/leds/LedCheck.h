#pragma once

#include <string>
#include <vector>

#include "profile/Profile.h"

namespace board {

/// Mistakes in a board's LED tables, in the profile's order; each is a line "FILE:LINE: KEY: what
/// is wrong". The sequencer takes such tables all the same: they do something else than was meant,
/// or nothing.
std::vector<std::string> checkLeds(const LedSequencerProfile& profile);

} // namespace board
