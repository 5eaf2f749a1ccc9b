#include "leds/LedCheck.h"

#include <gtest/gtest.h>

#include "host/leds/LedTables.h"

using support::FILES;
using support::ledsOf;
using support::row;

TEST(LedCheck, ReportsEachMistakeWithItsPlace) {
    const std::string on = "mask = 1\naction = 'on'\n";
    const struct {
        std::string text, mistake;
    } CASES[] = {
        {row("a b", on) + row("a b", "mask = 2\naction = 'off'"),
         "leds.command[1]: no line reaches this row: 'a b 0' is "},
        {row("a b", "mask = 5\naction = 'on'"), "leds.command[0].mask: no file shows 0x4 of 0x5"},
        {row("a b c", on),
         "leds.command[0]: no line can name this row: the word 'b c' can't be sent"},
        {row("a\tb c", on), "leds.command[0]: no line can name this row: the word 'a\tb'"},
        {row(std::string(40, 'a') + " " + std::string(40, 'b'), on),
         "leds.command[0]: no line can name this row: the line has 83 bytes"},
        {row("a ", on + "number = 7"), "leds.command[0]: no line can name this row: an empty word"},
        {row("a b", "mask = 0\naction = 'roll-up'"), "leds.command[0].mask: the roll has no LED"},
        {row("a b", "mask = 0\naction = 'flash'"), "leds.command[0].mask: is 0"},
        {row("a b", "mask = 0\naction = 'defaults'\ndefault = true"),
         "leds.command[0]: a default row with this action"},
        {row("a b", "mask = 1\naction = 9"), "leds.command[0].action: 9 is not an action"},
        {row("a b", "mask = 1\naction = 'roll-stop'") +
             row("a c", "mask = 3\naction = 'roll-up'\ngroup = 1"),
         "leds.command[0]: stops no roll"},
        {row("a b", "mask = 3\naction = 'roll-up'"),
         "leds.command[0]: each line starts one more roll"},
        {row("a b", on + "time_ms = -1"), "leds.command[0].time_ms: -1 is below 0"},
        {row("a b", "mask = 1\naction = 'off'\ntime_ms = 5"),
         "leds.command[0].time_ms: has no meaning"},
        {row("a b", on + "time_ms = 4294868"),
         "leds.command[0].time_ms: 4294868 is too long (expected at most 4294867)"},
        {"[[leds.file]]\nmask = 1\npath = 'again'\n", "leds.file[2].path: is never written"},
        {"[[leds.file]]\nmask = 0\npath = 'none'\n", "leds.file[3].path: the mask is 0"},
    };
    for (const auto& each : CASES) {
        const auto mistakes = board::checkLeds(ledsOf(FILES + each.text));
        ASSERT_EQ(mistakes.size(), 1U)
            << each.mistake << (mistakes.empty() ? "" : mistakes.front().text());
        const std::string mistake = mistakes.front().text();
        EXPECT_NE(mistake.find(each.mistake), std::string::npos) << mistake;
    }
    EXPECT_EQ(board::checkLeds(ledsOf("[leds]\ntick_ms = 0\naccess = 2\n")).size(), 2U);
    // A line may end after its first word, and a row that a blank line names is correct too.
    EXPECT_TRUE(board::checkLeds(ledsOf(FILES + row("a ", on) + row(" ", on) +
                                        row("b c", on + "time_ms = 4294867")))
                    .empty());
}
