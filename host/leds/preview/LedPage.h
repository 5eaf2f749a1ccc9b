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
/// blinkPhases; "repeat", the blink period; "looks"; "most", the limit of states; "machines", null
/// if exploreLeds has no result.
///
/// "looks" lists what a state can show. Each look is a list of four: the index of the row that
/// drives the LED, the kind of light, true if the row ends by itself, and a list of the rows that
/// it hides. A hidden row is a list of the same first three; it also hides the rows after it.
///
/// A machine belongs to the LED with the same index. It has "rows"; "look", for each state the
/// index of its look, or -1 if no row drives the LED; "lit", for each state a digit: 1 if the LED
/// is lit while blinking LEDs are dark, plus 2 if it is lit while they are lit; "next"; and "run",
/// the state in each tick of the preview. "next" has a list for a tick without a line, and one for
/// the line of each row. Element k of each list is the state that follows state k, or -1 if that
/// state is not listed.
std::string pageData(const LedSequencerProfile& profile, const LedWaves& waves);

} // namespace board
