#pragma once

#include <string>

#include "leds/preview/LedPreview.h"

namespace board {

/// The waves as a timing diagram in SVG: one row per LED, time from left to right in seconds,
/// commands as flags. A pointer over a segment shows which row drives the LED, from when to when.
/// Control characters become escapes: XML does not allow them.
std::string ledsToSvg(const LedWaves& waves);

} // namespace board
