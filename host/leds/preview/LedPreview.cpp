#include "leds/preview/LedPreview.h"

#include <algorithm>

#include "base/Error.h"
#include "leds/preview/SteppedLedCtrl.h"

namespace board {

namespace {

/// Cuts what drives an LED into segments, tick by tick.
class LedSegments {
public:
    void add(unsigned tick, const LedExplanation& led, const LedSequencerProfile& profile) {
        const std::uint64_t run = led.driver ? led.driver->run.number : 0;
        const LedDrive drive = driveOf(led, profile);
        if (m_isOpen && (run != m_run || !(drive == m_segments.back().drive)))
            close(tick);
        if (!m_isOpen && led.driver) {
            m_segments.push_back({tick, tick, drive, {}});
            m_isOpen = true;
        }
        m_run = run;
        for (const LedCause& cause : led.covers) {
            std::vector<LedDrive>& covers = m_segments.back().covers;
            const LedDrive covered = driveOf(cause, profile);
            if (std::find(covers.begin(), covers.end(), covered) == covers.end())
                covers.push_back(covered);
        }
    }

    std::vector<LedSegment> finish(unsigned ticks) {
        if (m_isOpen)
            close(ticks);
        return std::move(m_segments);
    }

private:
    void close(unsigned tick) {
        m_segments.back().end = tick;
        m_isOpen = false;
    }

    std::vector<LedSegment> m_segments;
    std::uint64_t m_run = 0;
    bool m_isOpen = false;
};

} // namespace

LedWaves previewLeds(const LedSequencerProfile& given, unsigned ticks, std::vector<LedLine> lines) {
    if (given.tickUs() == 0)
        throw Error(given.place + ".tick_ms: " + std::to_string(given.tickMs) +
                    " is not a usable tick period (expected 1 to 4294967)");
    std::stable_sort(lines.begin(), lines.end(),
                     [](const LedLine& a, const LedLine& b) { return a.tick < b.tick; });
    LedSequencerProfile profile = given;
    profile.access = LedCtrl::ACCESS_NONE;
    const LedTable table(profile);
    SteppedLedCtrl sequencer(profile, table);
    LedWaves waves{ticks, profile.tickMs, {}, std::move(lines), profile.commands};
    for (const Led& led : table.leds())
        waves.leds.push_back({led.mask, led.name, std::string(ticks, '0'), led.color});
    std::vector<LedSegments> segments(waves.leds.size());

    sequencer.runDefaults();
    for (LedLine& line : waves.lines)
        line.row = sequencer.rowOf(line.line);
    auto next = waves.lines.cbegin();
    for (unsigned tick = 0; tick < ticks; ++tick) {
        for (; next != waves.lines.cend() && next->tick <= tick; ++next)
            sequencer.run(next->line);
        const std::uint32_t output = sequencer.step();
        for (LedWave& led : waves.leds)
            if ((output & led.mask) != 0)
                led.wave[tick] = '1';
        if (!sequencer.mayDriveOthers())
            continue;
        const std::vector<LedExplanation> explanations = sequencer.explainNow();
        for (std::size_t i = 0; i < segments.size(); ++i)
            segments[i].add(tick, explanations[i], profile);
    }
    for (std::size_t i = 0; i < segments.size(); ++i)
        waves.leds[i].segments = segments[i].finish(ticks);
    return waves;
}

std::string wordsOf(const LedSequencerProfile::Command& row) {
    return row.word1 + " " + row.word2 + " " + std::to_string(row.number);
}

} // namespace board
