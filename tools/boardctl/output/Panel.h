#pragma once

#include <string>
#include <vector>

#include "leds/LedStates.h"

namespace boardctl {

/// The LEDs on one line at the bottom of a terminal, redrawn as they change.
class Panel {
public:
    /// Whether standard output is a terminal that can redraw a line.
    static bool isPossible();

    /// Draws the states that fit the width of the terminal.
    void draw(const std::vector<board::LedStates::State>& states);

    /// Removes the line, before something else is printed and at the end.
    void clear();

private:
    std::string m_shown;
};

} // namespace boardctl
