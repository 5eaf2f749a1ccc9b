#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "profile/Profile.h"

namespace board {

/// A command line of a preview, handed to the sequencer just before the output of a tick.
struct LedLine {
    unsigned tick; ///< 1 or more: the default rows run before tick 0
    std::string line;
    bool namesRow = true; ///< set by `previewLeds`: whether the line names a row of the table
};

/// What one LED shows: character k is '1' if it is lit in tick k, else '0'.
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

/// Runs the real sequencer with the tables of `profile` for `ticks` ticks, without waiting and
/// without its pipe and files. Throws Error for a tick period that the sequencer rejects.
LedWaves previewLeds(const LedSequencerProfile& profile, unsigned ticks,
                     std::vector<LedLine> lines);

} // namespace board
