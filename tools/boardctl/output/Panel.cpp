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

} // namespace

bool Panel::isPossible() {
    return canRedraw(STDOUT_FILENO);
}

void Panel::draw(const std::vector<board::LedStates::State>& states) {
    const std::size_t width = terminalWidth() - 1; // a full line would wrap
    std::size_t used = 0;
    std::string line;
    for (const board::LedStates::State& led : states) {
        const char* const lamp = !led.isLit ? "[?]" : *led.isLit ? "[#]" : "[ ]";
        const std::string name = board::printable(led.name);
        const std::size_t length = (used ? 2 : 0) + 4 + board::columnsOf(name);
        if (used + length + (&led == &states.back() ? 0 : MORE.size()) > width) {
            line += MORE;
            break;
        }
        const bool isLit = led.isLit.value_or(false) && isColored();
        line += (used ? "  " : "") + std::string(isLit ? "\x1b[32m" : "") + lamp +
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
