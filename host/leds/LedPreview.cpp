#include "leds/LedPreview.h"

#include <algorithm>

#include "base/Error.h"
#include "leds/LedTable.h"

namespace board {

namespace {

/// The sequencer without its thread: the caller ticks.
class Sequencer : public LedCtrl {
public:
    Sequencer(const std::vector<CmdDef>& rows, const LedSequencerProfile& profile)
        : LedCtrl(rows.data(), static_cast<unsigned>(rows.size()), nullptr, 0, ACCESS_NONE,
                  profile.tickMs, profile.blinkPattern, NotStarted()) {}
    using LedCtrl::find;
    using LedCtrl::handleCmd;
    using LedCtrl::nextOutput;
    using LedCtrl::setupDefault;
};

} // namespace

LedWaves previewLeds(const LedSequencerProfile& profile, unsigned ticks,
                     std::vector<LedLine> lines) {
    if (profile.tickUs() == 0)
        throw Error(profile.place + ".tick_ms: " + std::to_string(profile.tickMs) +
                    " is not a usable tick period (expected 1 to 4294967)");
    std::stable_sort(lines.begin(), lines.end(),
                     [](const LedLine& a, const LedLine& b) { return a.tick < b.tick; });
    const LedTable table(profile);
    Sequencer sequencer(table.commands(), profile);
    LedWaves waves{ticks, profile.tickMs, {}, std::move(lines)};
    for (const Led& led : table.leds())
        waves.leds.push_back({led.mask, led.name, std::string(ticks, '0')});

    sequencer.setupDefault();
    auto next = waves.lines.begin();
    for (unsigned tick = 0; tick < ticks; ++tick) {
        for (; next != waves.lines.end() && next->tick <= tick; ++next) {
            std::string line = next->line;
            next->namesRow = sequencer.find(line.c_str()) != nullptr;
            sequencer.handleCmd(line.data());
        }
        const std::uint32_t output = sequencer.nextOutput();
        for (LedWave& led : waves.leds)
            if ((output & led.mask) != 0)
                led.wave[tick] = '1';
    }
    return waves;
}

} // namespace board
