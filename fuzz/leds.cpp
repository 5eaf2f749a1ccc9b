// Any table, then any lines and ticks: nothing may crash or hang, and no LED may light that no row names.

#include <cstdlib>
#include <string>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "LedCtrl.h"

namespace {

struct Texts {
    std::string word1, word2;
};

class Sequencer : public LedCtrl {
public:
    Sequencer(const std::vector<CmdDef>& rows, unsigned tickMs, unsigned blinkPattern)
        : LedCtrl(rows.data(), static_cast<unsigned>(rows.size()), nullptr, 0, ACCESS_NONE, tickMs,
                  blinkPattern, NotStarted()) {}
    using LedCtrl::handleCmd;
    using LedCtrl::nextOutput;
    using LedCtrl::setupDefault;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    FuzzedDataProvider data(bytes, size);
    const auto tickMs = data.ConsumeIntegral<unsigned>();
    const auto blinkPattern = data.ConsumeIntegral<unsigned>();
    std::vector<Texts> texts(data.ConsumeIntegralInRange<std::size_t>(0, 16));
    std::vector<LedCtrl::CmdDef> rows;
    std::uint32_t named = 0;
    for (Texts& text : texts) { // kept as they are: the rows point into them
        text.word1 = data.ConsumeRandomLengthString(3).c_str();
        text.word2 = data.ConsumeRandomLengthString(3).c_str();
        rows.push_back({text.word1.c_str(), text.word2.c_str(), data.ConsumeIntegralInRange(-1, 2),
                        data.ConsumeIntegral<std::uint32_t>(), data.ConsumeIntegralInRange(-1, 9),
                        data.ConsumeIntegralInRange(-1, 3), data.ConsumeIntegral<std::int32_t>(),
                        data.ConsumeBool()});
        named |= rows.back().ledMask;
    }
    Sequencer leds(rows, tickMs, blinkPattern);
    leds.setupDefault();
    while (data.remaining_bytes() > 0) {
        if (data.ConsumeBool() && !rows.empty()) {
            const auto& row = rows[data.ConsumeIntegralInRange<std::size_t>(0, rows.size() - 1)];
            std::string line = std::string(row.word1) + " " + row.word2 + " " + std::to_string(row.number);
            leds.handleCmd(line.data());
        } else {
            std::string line = data.ConsumeRandomLengthString(80);
            leds.handleCmd(line.data());
        }
        for (int ticks = data.ConsumeIntegralInRange(0, 40); ticks > 0; --ticks)
            if ((leds.nextOutput() & ~named) != 0)
                std::abort();
    }
    return 0;
}
