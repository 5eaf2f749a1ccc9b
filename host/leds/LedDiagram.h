#pragma once

#include <string>

#include "leds/LedPreview.h"

namespace board {

/// The waves as text: one row of marks per LED below a ruler in ticks and milliseconds, in sections
/// that fit on a terminal. Control characters in names and command lines become escapes.
std::string ledsToText(const LedWaves& waves);

/// The waves as a timing diagram in SVG: one row per LED, time from left to right, commands as
/// flags. Control characters become escapes here too: XML does not allow them.
std::string ledsToSvg(const LedWaves& waves);

} // namespace board
