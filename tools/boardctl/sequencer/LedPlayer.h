#pragma once

#include "leds/preview/LedPreview.h"

namespace boardctl {

constexpr double SLOWEST_PLAY = 0.01, FASTEST_PLAY = 1000;

/// Plays the waves, `speed` times as fast as on the board, until they end or a signal ends the
/// program. On a terminal, shows the LEDs on one line; otherwise prints a line for each change.
/// Returns the exit status.
int playLeds(const board::LedWaves& waves, double speed);

} // namespace boardctl
