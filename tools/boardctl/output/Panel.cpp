#include "output/Panel.h"

#include <cstdlib>
#include <iostream>

#include <sys/ioctl.h>
#include <unistd.h>

#include "base/Text.h"
#include "output/Terminal.h"

namespace boardctl {

namespace {

const std::string MORE = " ..."; // shown if some LEDs do not fit

std::size_t terminalWidth() {
    constexpr std::size_t USUAL = 80;
    winsize size{};
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : USUAL;
}

bool isColored() {
    const char* const refused = std::getenv("NO_COLOR");
    return !refused || !*refused;
}

/// The escape sequence for a lamp's color. Terminals have neither orange nor amber, so both are
/// yellow.
const char* styleOf(board::LedColor color) {
    switch (color) {
    case board::LedColor::RED:
        return "\x1b[31m";
    case board::LedColor::ORANGE:
    case board::LedColor::AMBER:
    case board::LedColor::YELLOW:
        return "\x1b[33m";
    case board::LedColor::GREEN:
        return "\x1b[32m";
    case board::LedColor::CYAN:
        return "\x1b[36m";
    case board::LedColor::BLUE:
        return "\x1b[34m";
    case board::LedColor::VIOLET:
        return "\x1b[35m";
    case board::LedColor::WHITE:
    case board::LedColor::UNKNOWN:
        break;
    }
    return "\x1b[1m";
}

} // namespace

bool Panel::isPossible() {
    return canRedraw(STDOUT_FILENO);
}

void Panel::draw(const std::vector<board::LedStates::State>& states, const std::string& lead,
                 const std::vector<board::LedColor>& colors) {
    const std::size_t width = terminalWidth() - 1; // a full line would wrap
    std::size_t used = board::columnsOf(lead);
    std::string line = lead;
    for (std::size_t i = 0; i < states.size(); ++i) {
        const board::LedStates::State& led = states[i];
        const char* const lamp = !led.isLit ? "[?]" : *led.isLit ? "[#]" : "[ ]";
        const std::string name = board::printable(led.name);
        const std::size_t length = (used ? 2 : 0) + 4 + board::columnsOf(name);
        if (used + length + (&led == &states.back() ? 0 : MORE.size()) > width) {
            line += MORE;
            break;
        }
        const bool isLit = led.isLit.value_or(false) && isColored();
        const char* const style = styleOf(colors.empty() ? board::LedColor::GREEN : colors[i]);
        line += (used ? "  " : "") + std::string(isLit ? style : "") + lamp +
                (isLit ? "\x1b[0m" : "") + " " + name;
        used += length;
    }
    if (line == m_shown)
        return;
    std::cout << "\r\x1b[K" << line << std::flush;
    m_shown = line;
}

void Panel::clear() {
    if (!m_shown.empty())
        std::cout << "\r\x1b[K" << std::flush;
    m_shown.clear();
}

} // namespace boardctl
