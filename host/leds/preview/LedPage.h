#pragma once

#include <string>

#include "leds/preview/LedPreview.h"

namespace board {

/// A page for a browser that plays `waves`, a preview of `profile`. From any tick, the page's
/// reader can run rows and see what the sequencer would show (see exploreLeds). The page is one
/// file and fetches nothing. `title` names the board.
std::string ledsToHtml(const LedSequencerProfile& profile, const LedWaves& waves,
                       const std::string& title);

/// The page's data, as JSON with these keys: "preview", see LedJson.h; "rows"; "blink", see
/// blinkPhases; "repeat", the blink period; "looks", what states may look like (row, light, whether
/// it is timed, and a list of the same for what it hides, the lowest last); "most", the limit of
/// states; "machines", null if exploreLeds has no result.
///
/// A machine belongs to the LED with the same index. It has "rows", "look" (for each state an index
/// in "looks", or -1), "lit" (a digit for each state: 1 if the LED is lit while blinking LEDs are
/// dark, plus 2 if it is lit while they are lit), "next" (a list for no line and one for each of
/// the rows: the state after each state, or -1) and "run" (the state in each tick of the preview).
std::string pageData(const LedSequencerProfile& profile, const LedWaves& waves);

} // namespace board
