#include "sequencer/LedPlayer.h"

#include <iostream>
#include <optional>
#include <string>

#include <unistd.h>

#include "base/Text.h"
#include "leds/preview/LedText.h"
#include "output/Messages.h"
#include "output/Panel.h"
#include "program/Options.h"
#include "program/StopSignals.h"

namespace boardctl {

namespace {

class LedPlayer {
public:
    explicit LedPlayer(const board::LedWaves& waves)
        : m_waves(waves), m_next(waves.lines.begin()), m_hasPanel(Panel::isPossible()),
          m_timeWidth(waves.ticks == 0 ? 0 : board::tickText(waves, waves.ticks - 1).size()) {
        for (const board::LedWave& led : waves.leds)
            m_colors.push_back(led.color);
    }

    /// Prints the lines that the sequencer handles in `tick`, and what the LEDs then show. Returns
    /// false if the output can't be written, or still blocks when the program is asked to end.
    bool show(unsigned tick) {
        const auto first = m_next;
        while (m_next != m_waves.lines.end() && m_next->tick <= tick)
            ++m_next;
        const bool hasLines = first != m_next;
        if (!m_hasPanel && !hasLines && !board::isChange(m_waves, tick))
            return true;
        if (!StopSignals::waitWritable(STDOUT_FILENO))
            return false;
        if (hasLines)
            m_panel.clear();
        for (auto line = first; line != m_next; ++line)
            std::cout << board::lineText(m_waves, *line) << "\n";
        if (m_hasPanel)
            drawPanel(tick);
        else if (board::isChange(m_waves, tick))
            std::cout << board::momentText(m_waves, tick) << "\n";
        return flushOutput();
    }

    /// On a terminal, replaces the panel with the last state as text, unless the terminal blocks.
    /// Returns false if writing fails.
    bool end() {
        if (!m_last || !StopSignals::isWritable(STDOUT_FILENO))
            return true;
        m_panel.clear();
        std::cout << board::momentText(m_waves, *m_last) << "\n";
        return flushOutput();
    }

private:
    void drawPanel(unsigned tick) {
        std::vector<board::LedStates::State> states;
        for (const board::LedWave& led : m_waves.leds)
            states.push_back({led.name, led.wave[tick] == '1'});
        std::string time = board::tickText(m_waves, tick);
        time.resize(m_timeWidth, ' '); // so that the LEDs keep their places
        m_panel.draw(states, time, m_colors);
        m_last = tick;
    }

    const board::LedWaves& m_waves;
    std::vector<board::LedLine>::const_iterator m_next;
    const bool m_hasPanel;
    const std::size_t m_timeWidth;
    std::vector<board::LedColor> m_colors; ///< one per LED
    std::optional<unsigned> m_last;        ///< the tick that the panel shows
    Panel m_panel;
};

} // namespace

int playLeds(const board::LedWaves& waves, double speed) {
    constexpr double MS_A_SECOND = 1000;
    LedPlayer player(waves);
    const auto begin = StopSignals::Clock::now();
    const double tick = waves.tickMs / MS_A_SECOND / speed;
    bool isReadable = true, isEnded = false;
    for (unsigned i = 0; i < waves.ticks && isReadable && !isEnded; ++i) {
        isReadable = player.show(i);
        // The end of each tick is counted from the start, so that delays do not add up.
        isEnded = StopSignals::waitUntil(begin + StopSignals::spanOf(tick * (i + 1)));
    }
    isReadable = player.end() && isReadable;
    return isReadable || StopSignals::isAsked() ? DONE : FAILED;
}

} // namespace boardctl
