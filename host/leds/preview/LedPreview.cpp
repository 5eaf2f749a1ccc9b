#include "leds/preview/LedPreview.h"

#include <algorithm>
#include <tuple>

#include "base/Error.h"
#include "leds/LedRow.h"
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
        endCovers(tick, led.covers);
        for (const LedCause& cause : led.covers)
            if (!isAmong(m_covers, cause.run.number))
                m_covers.push_back({cause.run.number, {tick, tick, driveOf(cause, profile)}});
    }

    std::vector<LedSegment> finish(unsigned ticks) {
        if (m_isOpen)
            close(ticks);
        return std::move(m_segments);
    }

private:
    struct Cover {
        std::uint64_t run;
        LedCover cover;

        /// Sorts as the sequencer shows them: actions, flashes, states; the newest first.
        auto key() const {
            const LedDrive& drive = cover.drive;
            const int kind = drive.isTimed || drive.light == LedLight::ROLL ? 0
                             : drive.light == LedLight::FLASH               ? 1
                                                                            : 2;
            return std::tuple(kind, UINT64_MAX - run);
        }
    };

    static std::uint64_t runOf(const Cover& cover) { return cover.run; }
    static std::uint64_t runOf(const LedCause& cause) { return cause.run.number; }
    template <class Item>
    static bool isAmong(const std::vector<Item>& items, std::uint64_t run) {
        return std::any_of(items.begin(), items.end(),
                           [&](const Item& item) { return runOf(item) == run; });
    }

    /// Ends the covers that are not among `remaining`.
    void endCovers(unsigned tick, const std::vector<LedCause>& remaining) {
        for (auto each = m_covers.begin(); each != m_covers.end();)
            if (isAmong(remaining, each->run)) {
                ++each;
            } else {
                each->cover.end = tick;
                m_ended.push_back(*each);
                each = m_covers.erase(each);
            }
    }

    void close(unsigned tick) {
        endCovers(tick, {});
        std::sort(m_ended.begin(), m_ended.end(),
                  [](const Cover& a, const Cover& b) { return a.key() < b.key(); });
        for (const Cover& each : m_ended)
            m_segments.back().covers.push_back(each.cover);
        m_ended.clear();
        m_segments.back().end = tick;
        m_isOpen = false;
    }

    std::vector<LedSegment> m_segments;
    std::vector<Cover> m_covers, m_ended; ///< of the last segment: those that go on, and the others
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

std::vector<LedLight> hiddenLights(const LedSegment& segment) {
    std::vector<LedLight> lights(segment.end - segment.begin, LedLight::NONE);
    for (const LedCover& cover : segment.covers)
        std::fill_n(lights.begin() + (cover.begin - segment.begin), cover.end - cover.begin,
                    cover.drive.light);
    return lights;
}

std::string commandOf(const LedSequencerProfile::Command& row) {
    return row.number == 0 && !row.word2.empty() ? row.word1 + " " + row.word2 : lineOf(row);
}

} // namespace board
