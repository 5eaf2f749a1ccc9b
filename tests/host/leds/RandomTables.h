#pragma once

#include <random>
#include <string>

#include "profile/Profile.h"

/// Random tables and lines, for tests that compare two results for the same input.
namespace support {

using Random = std::mt19937;

inline unsigned below(Random& random, unsigned limit) {
    return static_cast<unsigned>(random() % limit);
}

constexpr unsigned RANDOM_PATTERN = 0x5A0FF0A5;

/// A table of random rows for seven LEDs, whose masks use six bits.
inline board::LedSequencerProfile randomTable(Random& random, bool hasNegativeTimes) {
    board::LedSequencerProfile profile;
    profile.access = LedCtrl::ACCESS_NONE;
    profile.blinkPattern = RANDOM_PATTERN;
    for (const std::uint32_t mask : {1U, 2U, 4U, 8U, 16U, 0x80000000U, 0x80000006U})
        profile.files.push_back({static_cast<std::int32_t>(mask), {"led", ""}, 1});
    const std::int32_t times[] = {0, 0, 0, 100, 250, 700, hasNegativeTimes ? -500 : 0};
    const std::uint32_t masks[] = {1, 2, 3, 6, 8, 12, 0x1F, 0x80000001, 0x80000000};
    for (unsigned row = 2 + below(random, 11); row > 0; --row)
        profile.commands.push_back(
            {below(random, 2) != 0 ? "a" : "b", "r" + std::to_string(row), 0,
             masks[below(random, 9)], static_cast<LedCtrl::ActionKind>(below(random, 9)),
             static_cast<std::int32_t>(below(random, 4)) - 1, times[below(random, 7)],
             below(random, 4) == 0, "place " + std::to_string(row)});
    return profile;
}

/// A line of the table, or one that matches no row.
inline std::string randomLine(Random& random, const board::LedSequencerProfile& profile) {
    const auto& row = profile.commands[below(random, unsigned(profile.commands.size()))];
    return row.word1 + " " + row.word2 + (below(random, 9) == 0 ? " 1" : "");
}

} // namespace support
