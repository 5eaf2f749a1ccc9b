#pragma once

#include <string>

#include "leds/LedPreview.h"

namespace board {

/// Waves as rows of marks below a ruler of ticks and milliseconds, cut into pieces that fit on a
/// terminal.
std::string ledsToText(const LedWaves& waves);

/// Waves as a timing diagram, a picture in the SVG format: a row for each LED, time to the right,
/// the commands as flags.
std::string ledsToSvg(const LedWaves& waves);

} // namespace board
