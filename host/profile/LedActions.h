#pragma once

#include <cstdint>
#include <initializer_list>
#include <utility>

#include "LedCtrl.h"

namespace board {

/// The actions of the LED table and their names.
constexpr std::initializer_list<std::pair<const char*, std::int32_t>> LED_ACTIONS = {
    {"on", LedCtrl::ACTION_ON},
    {"off", LedCtrl::ACTION_OFF},
    {"blink", LedCtrl::ACTION_BLINK},
    {"flash", LedCtrl::ACTION_FLASH},
    {"roll-up", LedCtrl::ACTION_ROLL_UP},
    {"roll-down", LedCtrl::ACTION_ROLL_DOWN},
    {"roll-stop", LedCtrl::ACTION_ROLL_STOP},
    {"defaults", LedCtrl::ACTION_DEFAULTS}};

/// The action's name in a profile; null for a number that is not an action.
constexpr const char* actionName(std::int32_t action) {
    for (const auto& [name, number] : LED_ACTIONS)
        if (number == action)
            return name;
    return nullptr;
}

} // namespace board
