#include "leds/preview/LedGlyphs.h"

#include <algorithm>

namespace board {

namespace {

constexpr double HIDDEN_BELOW = 3;  ///< from the ground to the middle of the strip
constexpr double HIDDEN_HEIGHT = 3; ///< of the strip
constexpr double DOT = 2.5;         ///< radius of the head of a flash

std::string point(double x, double y) {
    return svgNumber(x) + " " + svgNumber(y);
}

/// The attribute of a line that stands for `light`: dashes for blinking, dots for a roll.
std::string dashesOf(LedLight light) {
    if (light == LedLight::BLINK)
        return " stroke-dasharray=\"5 3\"";
    return light == LedLight::ROLL ? " stroke-dasharray=\"1 3\"" : "";
}

/// The outline of one lit stretch from `left` to `right`. It begins at the left end of the ground
/// and does not go beyond `right`.
std::string outline(LedLight light, double left, double right, double ground) {
    const double top = ground - LAMP_HEIGHT;
    std::string steps = "M" + point(left, ground);
    switch (light) {
    case LedLight::FLASH: // a spike
        steps += "L" + point((left + right) / 2, top) + "L" + point(right, ground);
        break;
    case LedLight::ROLL: // an arrowhead
        steps += "L" + point(left, top) + "L" + point(right, (top + ground) / 2);
        break;
    default:
        steps += "V" + svgNumber(top) + "H" + svgNumber(right) + "V" + svgNumber(ground);
    }
    return steps + "z";
}

} // namespace

const char* inkOf(LedColor color) {
    switch (color) {
    case LedColor::RED:
        return "#b3261e";
    case LedColor::ORANGE:
        return "#a8480a";
    case LedColor::AMBER:
        return "#8f5a00";
    case LedColor::YELLOW:
        return "#736400";
    case LedColor::GREEN:
        return "#0b5a34";
    case LedColor::CYAN:
        return "#0a6170";
    case LedColor::BLUE:
        return "#1f4bb8";
    case LedColor::VIOLET:
        return "#6b2fa8";
    case LedColor::WHITE:
        return "#565e66";
    case LedColor::UNKNOWN:
        break;
    }
    return "#23282d";
}

const char* glowOf(LedColor color) {
    switch (color) {
    case LedColor::RED:
        return "#ff4438";
    case LedColor::ORANGE:
        return "#ff8a1f";
    case LedColor::AMBER:
        return "#ffb300";
    case LedColor::YELLOW:
        return "#ffe135";
    case LedColor::GREEN:
        return "#2fd472";
    case LedColor::CYAN:
        return "#35dcec";
    case LedColor::BLUE:
        return "#4d8dff";
    case LedColor::VIOLET:
        return "#b678ff";
    case LedColor::WHITE:
        return "#ffffff";
    case LedColor::UNKNOWN:
        break;
    }
    return "#d8c88a";
}

std::string hatchingIn(const std::string& ink) {
    return "<pattern id=\"timed-" + ink.substr(1) +
           "\" width=\"4\" height=\"4\" patternUnits=\"userSpaceOnUse\" "
           "patternTransform=\"rotate(45)\"><rect width=\"4\" height=\"4\" fill=\"#ffffff\"/>"
           "<rect width=\"2.2\" height=\"4\" fill=\"" +
           ink + "\"/></pattern>\n";
}

void drawLight(Svg& svg, const LedDrive& drive, const std::string& wave, const LedStretch& stretch,
               const std::string& ink) {
    const double top = stretch.ground - LAMP_HEIGHT;
    const std::string thin = " stroke=\"" + ink + "\" stroke-width=\"";
    if (drive.isTimed)
        svg.rectangle(stretch.left, top, stretch.right - stretch.left, LAMP_HEIGHT, "none",
                      thin + "0.8\"" + dashesOf(drive.light));
    else if (drive.light == LedLight::BLINK || drive.light == LedLight::ROLL)
        svg.line(stretch.left, top, stretch.right, top, ink, dashesOf(drive.light));
    const auto at = [&](std::size_t tick) {
        return stretch.left + stretch.tick * static_cast<double>(tick);
    };
    // Each tick of a roll or flash has its own mark; otherwise, adjacent lit ticks are joined.
    const bool isSingle = drive.light == LedLight::ROLL || drive.light == LedLight::FLASH;
    std::string steps;
    for (std::size_t begin = wave.find('1'); begin != std::string::npos;) {
        const std::size_t end = isSingle ? begin + 1 : std::min(wave.find('0', begin), wave.size());
        steps += outline(drive.light, at(begin), at(end), stretch.ground);
        if (drive.light == LedLight::FLASH)
            svg.circle((at(begin) + at(end)) / 2, top, DOT, ink);
        begin = wave.find('1', end);
    }
    if (!steps.empty())
        svg.path(steps, drive.isTimed ? "url(#timed-" + ink.substr(1) + ")" : ink,
                 " class=\"lit\"" + (drive.isTimed ? thin + "1\"" : ""));
}

void drawHidden(Svg& svg, LedLight light, const LedStretch& stretch, const std::string& ink) {
    const double y = stretch.ground + HIDDEN_BELOW;
    if (light != LedLight::STEADY && light != LedLight::BLINK && light != LedLight::ROLL)
        return;
    svg.line(stretch.left, y, stretch.right, y, ink,
             " class=\"hidden\" stroke-width=\"" + svgNumber(HIDDEN_HEIGHT) + "\"" +
                 dashesOf(light));
}

std::string lightText(const LedDrive& drive) {
    switch (drive.light) {
    case LedLight::STEADY:
        return drive.isTimed ? "lit for a time" : "lit";
    case LedLight::BLINK:
        return drive.isTimed ? "blinks for a time" : "blinks";
    case LedLight::FLASH:
        return "flashes";
    case LedLight::ROLL:
        return drive.isTimed ? "rolls for a time" : "rolls";
    case LedLight::NONE:
        break;
    }
    return "dark";
}

} // namespace board
