#include "leds/preview/LedPreview.h"

#include <gtest/gtest.h>

#include "base/Error.h"
#include "host/leds/LedTables.h"

using support::FILES;
using support::ledsOf;
using support::row;

TEST(LedPreview, ShowsEachLedTickByTickInTheOrderOfTheMasks) {
    const board::LedSequencerProfile leds =
        ledsOf("[leds]\nblink_pattern = 1\n" + FILES +
               row("all on", "mask = 0x80000001\naction = 'on'\ntime_ms = 200") +
               row("two flash", "mask = 2\naction = 'flash'") +
               row("high blink", "mask = 0x80000000\naction = 'blink'\ndefault = true"));
    board::LedWaves waves = board::previewLeds(
        leds, 34, {{30, "two flash"}, {1, "all on"}, {1, "no such"}, {99, "all on"}});
    std::string shown;
    for (const board::LedWave& led : waves.leds)
        shown += std::to_string(led.mask) + " " + led.name + " " + led.wave + "\n";
    for (const board::LedLine& line : waves.lines)
        shown += line.line + (line.row ? "\n" : " (names no row)\n");
    EXPECT_EQ(shown, "1 one 0110000000000000000000000000000000\n"
                     "3 pair 0110000000000000000000000000001000\n"
                     "2147483648 high 0110000000000000000000000000000010\n"
                     "all on\nno such (names no row)\ntwo flash\nall on\n");
    EXPECT_THROW(board::previewLeds(ledsOf("[leds]\ntick_ms = 0\n"), 1, {}), board::Error);
}
