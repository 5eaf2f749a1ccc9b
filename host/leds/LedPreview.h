#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "profile/Profile.h"

namespace board {

/// A command line of a preview, handed to the sequencer just before the output of a tick.
struct LedLine {
    unsigned tick; ///< 1 or more: the defaults stand before tick 0
    std::string line;
    bool namesRow = true; ///< false in what `previewLeds` returns: no row of the table is named so
};

/// What one LED shows: character k is '1' where it is lit in tick k, else '0'.
struct LedWave {
    std::uint32_t mask;
    std::string name;
    std::string wave;
};

/// What the LEDs of a board would show.
struct LedWaves {
    unsigned ticks;
    std::uint32_t tickMs;
    std::vector<LedWave> leds; ///< in ascending order of their masks
    std::vector<LedLine> lines;
};

/// Runs the sequencer itself over `profile` for `ticks` ticks, at once and without its pipe and
/// files. Throws Error for a tick period that the sequencer refuses.
LedWaves previewLeds(const LedSequencerProfile& profile, unsigned ticks,
                     std::vector<LedLine> lines);

} // namespace board
