#include "leds/preview/LedPreview.h"

#include <algorithm>
#include <tuple>

#include "base/Error.h"
#include "leds/LedRow.h"
#include "leds/preview/SteppedLedCtrl.h"

namespace board {

namespace {

/// Collects the segments of an LED, tick by tick.
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

        /// Sorts as LedExplanation::covers: actions, flashes, states; the newest first.
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
    std::vector<Cover> m_covers, m_ended; ///< of the last segment: going on, and ended
    std::uint64_t m_run = 0;
    bool m_isOpen = false;
};

/// The profile for a sequencer that writes to no files.
LedSequencerProfile withoutFiles(LedSequencerProfile profile) {
    if (profile.tickUs() == 0)
        throw Error(profile.place + ".tick_ms: " + std::to_string(profile.tickMs) +
                    " is not a usable tick period (expected 1 to 4294967)");
    profile.access = LedCtrl::ACCESS_NONE;
    return profile;
}

} // namespace

/// A sequencer and the lines that it is given.
struct LedSequence {
    LedSequence(const LedSequencerProfile& given, unsigned ticks, std::vector<LedLine> lines)
        : profile(withoutFiles(given)), table(profile), sequencer(profile, table),
          waves{ticks, given.tickMs, {}, std::move(lines), given.commands} {
        std::stable_sort(waves.lines.begin(), waves.lines.end(),
                         [](const LedLine& a, const LedLine& b) { return a.tick < b.tick; });
        for (const Led& led : table.leds())
            waves.leds.push_back({led.mask, led.name, "", led.color});
        sequencer.runDefaults();
        for (LedLine& each : waves.lines)
            each.row = sequencer.rowOf(each.line);
    }

    /// Runs the next tick and returns the LEDs that are lit in it.
    std::uint32_t step() {
        for (; line < waves.lines.size() && waves.lines[line].tick <= tick; ++line)
            sequencer.run(waves.lines[line].line);
        ++tick;
        return sequencer.step();
    }

    const LedSequencerProfile profile;
    const LedTable table;
    SteppedLedCtrl sequencer;
    LedWaves waves; ///< the waves and segments of the LEDs are empty
    unsigned tick = 0;
    std::size_t line = 0; ///< the first one that has not been run
};

LedPreviewRun::LedPreviewRun(const LedSequencerProfile& profile, unsigned ticks,
                             std::vector<LedLine> lines)
    : m_sequence(std::make_unique<LedSequence>(profile, ticks, std::move(lines))) {}

LedPreviewRun::~LedPreviewRun() = default;

const LedWaves& LedPreviewRun::waves() const {
    return m_sequence->waves;
}

std::uint32_t LedPreviewRun::next() {
    return m_sequence->step();
}

LedWaves previewLeds(const LedSequencerProfile& profile, unsigned ticks,
                     std::vector<LedLine> lines) {
    LedSequence sequence(profile, ticks, std::move(lines));
    LedWaves& waves = sequence.waves;
    for (LedWave& led : waves.leds)
        led.wave.assign(ticks, '0');
    std::vector<LedSegments> segments(waves.leds.size());
    for (unsigned tick = 0; tick < ticks; ++tick) {
        const std::uint32_t output = sequence.step();
        for (LedWave& led : waves.leds)
            if ((output & led.mask) != 0)
                led.wave[tick] = '1';
        if (!sequence.sequencer.mayDriveOthers())
            continue;
        const std::vector<LedExplanation> explanations = sequence.sequencer.explainNow();
        for (std::size_t i = 0; i < segments.size(); ++i)
            segments[i].add(tick, explanations[i], profile);
    }
    for (std::size_t i = 0; i < segments.size(); ++i)
        waves.leds[i].segments = segments[i].finish(ticks);
    return std::move(sequence.waves);
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
