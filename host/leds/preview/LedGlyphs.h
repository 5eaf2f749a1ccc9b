#pragma once

#include <string>

#include "leds/preview/LedPreview.h"
#include "leds/preview/Svg.h"

namespace board {

/// A stretch of the picture: its ends, the width of a tick, and the line that marks stand on.
struct LedStretch {
    double left, right;
    double tick;
    double ground;
};

/// Height of the mark of a lit LED.
constexpr double LAMP_HEIGHT = 18;

/// The color of an LED's marks: as dark as text, so that they stand out in grayscale too.
const char* inkOf(LedColor color);
/// The color of the light itself.
const char* glowOf(LedColor color);

/// The definition of a hatching in `ink`, which fills timed marks.
std::string hatchingIn(const std::string& ink);

/// Draws what `drive` shows in `stretch`. `wave` has a character for each tick of `stretch`, '1'
/// for lit. Each kind of light has a shape of its own, and timed light is hatched in a frame, so
/// that readers can tell them apart without colors.
void drawLight(Svg& svg, const LedDrive& drive, const std::string& wave, const LedStretch& stretch,
               const std::string& ink);

/// Draws a strip below the ground of `stretch` for `light`, which something else hides.
void drawHidden(Svg& svg, LedLight light, const LedStretch& stretch, const std::string& ink);

/// `drive` in words: "blinks for a time".
std::string lightText(const LedDrive& drive);

} // namespace board
