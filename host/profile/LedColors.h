#pragma once

#include <cstdint>
#include <initializer_list>
#include <utility>

namespace board {

/// The color of an LED's light, for pictures of the board.
enum class LedColor : std::int32_t {
    UNKNOWN, ///< the profile does not state it
    RED,
    ORANGE,
    AMBER,
    YELLOW,
    GREEN,
    CYAN,
    BLUE,
    VIOLET,
    WHITE,
};

/// The colors that a profile may state.
constexpr std::initializer_list<std::pair<const char*, std::int32_t>> LED_COLORS = {
    {"red", static_cast<std::int32_t>(LedColor::RED)},
    {"orange", static_cast<std::int32_t>(LedColor::ORANGE)},
    {"amber", static_cast<std::int32_t>(LedColor::AMBER)},
    {"yellow", static_cast<std::int32_t>(LedColor::YELLOW)},
    {"green", static_cast<std::int32_t>(LedColor::GREEN)},
    {"cyan", static_cast<std::int32_t>(LedColor::CYAN)},
    {"blue", static_cast<std::int32_t>(LedColor::BLUE)},
    {"violet", static_cast<std::int32_t>(LedColor::VIOLET)},
    {"white", static_cast<std::int32_t>(LedColor::WHITE)}};

/// The color's name in a profile; null for UNKNOWN.
constexpr const char* colorName(LedColor color) {
    for (const auto& [name, value] : LED_COLORS)
        if (value == static_cast<std::int32_t>(color))
            return name;
    return nullptr;
}

} // namespace board
