#pragma once

#include "leds/preview/LedPreview.h"

namespace boardctl {

constexpr double SLOWEST_PLAY = 0.01, FASTEST_PLAY = 1000;

/// Shows the waves as time passes, `speed` times as fast as on the board, until they end or a
/// signal ends the program: on a terminal the LEDs on one line, otherwise a line for each change.
/// Returns the exit status.
int playLeds(const board::LedWaves& waves, double speed);

} // namespace boardctl
