#include "LedPreview.h"

#include <gtest/gtest.h>

#include "Error.h"
#include "LedCheck.h"
#include "LedDiagram.h"
#include "LedPipe.h"
#include "support/TempDir.h"

using support::TempDir;

namespace {

board::LedsProfile ledsOf(const std::string& text) {
    const TempDir dir;
    dir.write("board.toml", text);
    return board::Profile::load(dir.path("board.toml")).ledService.value();
}

std::string row(const std::string& words, const std::string& rest) {
    const auto blank = words.find(' ');
    return "[[leds.command]]\nword1 = '" + words.substr(0, blank) + "'\nword2 = '" + words.substr(blank + 1) +
           "'\n" + rest + "\n";
}

const std::string FILES =
    "[[leds.file]]\nmask = 0x80000000\npath = 'high'\n[[leds.file]]\nmask = 3\npath = 'sys/pair/brightness'\n"
    "[[leds.file]]\nmask = 1\npath = 'led:one'\n";

} // namespace

TEST(LedPreview, ShowsEachLedTickByTickInTheOrderOfTheMasks) {
    const board::LedsProfile leds =
        ledsOf("[leds]\nblink_pattern = 1\n" + FILES +
               row("all on", "mask = 0x80000001\naction = 'on'\ntime_ms = 200") +
               row("two flash", "mask = 2\naction = 'flash'") +
               row("high blink", "mask = 0x80000000\naction = 'blink'\ndefault = true"));
    const board::LedWaves waves =
        board::previewLeds(leds, 34, {{30, "two flash"}, {1, "all on"}, {1, "no such"}, {99, "all on"}});
    ASSERT_EQ(waves.leds.size(), 3U);
    const std::string dark(34, '0');
    const struct {
        std::uint32_t mask;
        const char* name;
        std::string wave;
    } EXPECTED[] = {{1, "one", "0110" + dark.substr(4)},
                    {3, "pair", "0110" + dark.substr(0, 26) + "1000"},
                    {0x80000000, "high", "0110" + dark.substr(0, 28) + "10"}};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(waves.leds[i].mask, EXPECTED[i].mask);
        EXPECT_EQ(waves.leds[i].name, EXPECTED[i].name);
        EXPECT_EQ(waves.leds[i].wave, EXPECTED[i].wave) << EXPECTED[i].name;
    }
    const std::string text = board::ledsToText(waves);
    EXPECT_NE(text.find("ms    0         1000      2000      3000\n"), std::string::npos) << text;
    EXPECT_NE(text.find("pair  .##" + std::string(27, '.') + "#...\n"), std::string::npos) << text;
    EXPECT_NE(text.find("v tick 30, 3000 ms: two flash\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("99"), std::string::npos) << text;

    EXPECT_THROW(board::previewLeds(ledsOf("[leds]\ntick_ms = 0\n"), 1, {}), board::Error);
}

TEST(LedPreview, DrawsAPictureOfAnyNamesAndLines) {
    board::LedWaves waves{
        20, 100, {{1, "<a&\"b\">", std::string(19, '0') + "1"}}, {{3, "x < y"}, {4, "z"}, {25, "late"}}};
    const std::string svg = board::ledsToSvg(waves);
    EXPECT_NE(svg.find("&lt;a&amp;&quot;b&quot;&gt;"), std::string::npos) << svg;
    EXPECT_NE(svg.find("x &lt; y"), std::string::npos);
    EXPECT_EQ(svg.find("late"), std::string::npos);
    EXPECT_EQ(svg.find("nan"), std::string::npos);
    EXPECT_EQ(svg.rfind("</svg>\n"), svg.size() - 7);
}

TEST(LedCheck, FindsEachMistakeAndSaysWhere) {
    const std::string on = "mask = 1\naction = 'on'\n";
    const struct {
        std::string text, mistake;
    } CASES[] = {
        {row("a b", on) + row("a b", "mask = 2\naction = 'off'"),
         "leds.command[1]: no line reaches this row: 'a b 0' is "},
        {row("a b", "mask = 5\naction = 'on'"), "leds.command[0].mask: no file shows 0x4 of 0x5"},
        {row("a b c", on), "leds.command[0]: no line can name this row: the word 'b c' can't be sent"},
        {row("a\tb c", on), "leds.command[0]: no line can name this row: the word 'a\tb'"},
        {row(std::string(40, 'a') + " " + std::string(40, 'b'), on),
         "leds.command[0]: no line can name this row: the line has 83 bytes"},
        {row("a ", on + "number = 7"), "leds.command[0]: no line can name this row: an empty word"},
        {row("a b", "mask = 0\naction = 'roll-up'"), "leds.command[0].mask: the roll has no LED"},
        {row("a b", "mask = 0\naction = 'flash'"), "leds.command[0].mask: is 0"},
        {row("a b", "mask = 0\naction = 'defaults'\ndefault = true"),
         "leds.command[0]: a default row that asks for the defaults"},
        {row("a b", "mask = 1\naction = 9"), "leds.command[0].action: 9 is no action"},
        {row("a b", "mask = 1\naction = 'roll-stop'") + row("a c", "mask = 3\naction = 'roll-up'\ngroup = 1"),
         "leds.command[0]: stops no roll"},
        {row("a b", "mask = 3\naction = 'roll-up'"), "leds.command[0]: each line starts one more roll"},
        {row("a b", on + "time_ms = -1"), "leds.command[0].time_ms: -1 is below 0"},
        {row("a b", "mask = 1\naction = 'off'\ntime_ms = 5"), "leds.command[0].time_ms: has no meaning"},
        {row("a b", on + "time_ms = 4294868"),
         "leds.command[0].time_ms: 4294868 is too long (expected at most 4294867)"},
        {"[[leds.file]]\nmask = 1\npath = 'again'\n", "leds.file[2].path: is never written"},
        {"[[leds.file]]\nmask = 0\npath = 'none'\n", "leds.file[3].path: the mask is 0"},
    };
    for (const auto& each : CASES) {
        const std::vector<std::string> mistakes = board::checkLeds(ledsOf(FILES + each.text));
        ASSERT_EQ(mistakes.size(), 1U) << each.mistake << (mistakes.empty() ? "" : mistakes.front());
        EXPECT_NE(mistakes[0].find(each.mistake), std::string::npos) << mistakes[0];
    }
    EXPECT_EQ(board::checkLeds(ledsOf("[leds]\ntick_ms = 0\naccess = 2\n")).size(), 2U);
    // A line may end after its first word, and nothing is wrong with a row that a blank line names.
    EXPECT_TRUE(
        board::checkLeds(ledsOf(FILES + row("a ", on) + row(" ", on) + row("b c", on + "time_ms = 4294867")))
            .empty());
}
