#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "leds/preview/LedPreview.h"

namespace board {

/// The most states that the LEDs of a table may have together for `exploreLeds` to list them.
constexpr std::size_t MOST_LED_STATES = 32768;

/// Everything that one LED may show, whichever lines arrive, with at most one line per tick. What
/// follows depends only on the present state, so a list of states is enough.
struct LedMachine {
    static constexpr std::uint32_t NOT_LISTED = UINT32_MAX;

    /// What the LED shows in a tick, and what can follow.
    struct State {
        bool isLitInDark;              ///< whether it is lit while everything that blinks is dark
        bool isLitInLight;             ///< whether it is lit while everything that blinks is lit
        std::optional<LedDrive> drive; ///< what holds the LED
        std::vector<LedDrive> covers;  ///< what else holds it; each hides those after it
        /// The state in the next tick: first without a line, then after the line of each of `rows`.
        /// NOT_LISTED if the row would run a second time beside itself: such states have no end.
        std::vector<std::uint32_t> next;
    };

    std::uint32_t mask = 0;
    std::vector<std::size_t> rows; ///< the rows whose lines matter to this LED
    std::vector<State> states;
    std::vector<std::uint32_t> run; ///< the state in each tick of the preview
};

/// Runs the real sequencer through everything that each LED of `waves`, a preview of `profile`, may
/// show from any of its ticks on. Empty if that is more than MOST_LED_STATES states, or takes more
/// than two million ticks to find out.
///
/// For each LED, only the rows that matter to it are run: those that light or end it, and those
/// that end one of these.
std::optional<std::vector<LedMachine>> exploreLeds(const LedSequencerProfile& profile,
                                                   const LedWaves& waves);

} // namespace board
