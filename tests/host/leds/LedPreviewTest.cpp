#include "leds/LedPreview.h"

#include <gtest/gtest.h>

#include "base/Error.h"
#include "host/leds/LedTables.h"
#include "leds/LedDiagram.h"

using support::FILES;
using support::ledsOf;
using support::row;

TEST(LedPreview, ShowsEachLedTickByTickInTheOrderOfTheMasks) {
    const board::LedSequencerProfile leds =
        ledsOf("[leds]\nblink_pattern = 1\n" + FILES +
               row("all on", "mask = 0x80000001\naction = 'on'\ntime_ms = 200") +
               row("two flash", "mask = 2\naction = 'flash'") +
               row("high blink", "mask = 0x80000000\naction = 'blink'\ndefault = true"));
    const board::LedWaves waves = board::previewLeds(
        leds, 34, {{30, "two flash"}, {1, "all on"}, {1, "no such"}, {99, "all on"}});
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
    ASSERT_EQ(waves.lines.size(), 4U);
    EXPECT_TRUE(waves.lines[0].namesRow && waves.lines[2].namesRow);
    EXPECT_FALSE(waves.lines[1].namesRow) << waves.lines[1].line;

    const std::string longer = "L\u00FCfter";
    const std::string named =
        board::ledsToText({1, 100, {{1, longer, "1"}, {2, "power", "0"}}, {}});
    EXPECT_NE(named.find(longer + "  #\npower   .\n"), std::string::npos) << named;

    EXPECT_THROW(board::previewLeds(ledsOf("[leds]\ntick_ms = 0\n"), 1, {}), board::Error);
}

TEST(LedPreview, DrawsAPictureOfAnyNamesAndLines) {
    board::LedWaves waves{20,
                          100,
                          {{1, "<a&\"b\">", std::string(19, '0') + "1"}},
                          {{3, "x < y"}, {4, "z"}, {25, "late"}}};
    const std::string svg = board::ledsToSvg(waves);
    EXPECT_NE(svg.find("&lt;a&amp;&quot;b&quot;&gt;"), std::string::npos) << svg;
    EXPECT_NE(svg.find("x &lt; y"), std::string::npos);
    EXPECT_EQ(svg.find("late"), std::string::npos);
    EXPECT_EQ(svg.find("nan"), std::string::npos);
    EXPECT_EQ(svg.rfind("</svg>\n"), svg.size() - 7);
    EXPECT_NE(svg.find(">2</text>"), std::string::npos) << "the axis ends at two seconds";
}

TEST(LedPreview, HangsAFlagBelowThoseThatCrossItsPole) {
    const std::string svg = board::ledsToSvg({100,
                                              100,
                                              {{1, "one", std::string(100, '0')}},
                                              {{10, "long long line"}, {12, "next"}, {90, "far"}}});
    const auto heightOf = [&](const std::string& text) {
        const std::size_t y = svg.rfind(" y=\"", svg.find(">" + text + "<"));
        return y != std::string::npos ? std::stod(svg.substr(y + 4)) : -1;
    };
    EXPECT_GT(heightOf("next"), heightOf("long long line")) << svg;
    EXPECT_EQ(heightOf("far"), heightOf("long long line"));
}
