#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "profile/Profile.h"
#include "profile/ProfileError.h"

namespace board {

/// The mistakes in a board's LED tables, in the profile's order. The sequencer accepts such tables,
/// but they do nothing or not what was intended.
std::vector<ProfileFault> checkLeds(const LedSequencerProfile& profile);

/// Whether the line has a row in the table. Without a number, it has the number 0.
bool hasRow(const LedSequencerProfile& profile, const std::string& word1, const std::string& word2,
            std::optional<std::int32_t> number);

} // namespace board
