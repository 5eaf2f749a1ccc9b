#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "leds/preview/LedPreview.h"

namespace board {

/// The most states that `exploreLeds` lists for all LEDs of a table together.
constexpr std::size_t MOST_LED_STATES = 32768;

/// Everything that one LED may show, whichever lines arrive, if at most one arrives per tick. What
/// follows a state depends only on that state, so a list of states is enough.
struct LedMachine {
    static constexpr std::uint32_t NOT_LISTED = UINT32_MAX;

    /// What the LED shows in a tick, and what can follow.
    struct State {
        bool isLitInDark;              ///< whether it is lit while everything that blinks is dark
        bool isLitInLight;             ///< whether it is lit while everything that blinks is lit
        std::optional<LedDrive> drive; ///< what holds the LED
        std::vector<LedDrive> covers;  ///< what else holds it; each hides those after it
        /// The state in the next tick: first without a line, then after the line of each of `rows`.
        /// NOT_LISTED if two runs of the row would then overlap: there is no limit to the number of
        /// such states.
        std::vector<std::uint32_t> next;
    };

    std::uint32_t mask = 0;
    std::vector<std::size_t> rows; ///< the rows whose lines may change what this LED shows
    std::vector<State> states;
    std::vector<std::uint32_t> run; ///< the state in each tick of the preview
};

/// Runs the real sequencer through everything that each LED may show after any tick of `waves`, a
/// preview of `profile`. Empty if there are more than MOST_LED_STATES states, or if
/// finding them takes more than two million ticks.
///
/// For each LED, runs only the rows that `rowsFor` returns: see LedSubtable.h.
std::optional<std::vector<LedMachine>> exploreLeds(const LedSequencerProfile& profile,
                                                   const LedWaves& waves);

} // namespace board
