#pragma once

#include <string>
#include <vector>

#include "leds/LedStates.h"
#include "profile/LedColors.h"

namespace boardctl {

/// The LEDs on one line at the bottom of a terminal, redrawn as they change.
class Panel {
public:
    /// Whether standard output is a terminal that can redraw a line.
    static bool isPossible();

    /// Draws `lead` and the states that fit the width of the terminal. A lit LED has the color at
    /// its index in `colors`, or is bold if that color is WHITE or UNKNOWN. Without `colors`, all
    /// lit LEDs are green.
    void draw(const std::vector<board::LedStates::State>& states, const std::string& lead = "",
              const std::vector<board::LedColor>& colors = {});

    /// Removes the line. Call it before anything else is printed, and at the end.
    void clear();

private:
    std::string m_shown;
};

} // namespace boardctl
