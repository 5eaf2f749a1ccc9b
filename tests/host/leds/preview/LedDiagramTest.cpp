#include "leds/preview/LedPicture.h"
#include "leds/preview/LedText.h"

#include <gtest/gtest.h>

TEST(LedDiagram, CutsTextIntoSectionsOf60TicksWithTheirOwnLines) {
    const board::LedWaves waves{
        61, 100, {{1, "L\u00FCfter", std::string(60, '0') + "1"}}, {{60, "late"}, {61, "never"}}};
    EXPECT_EQ(
        board::ledsToText(waves),
        "tick    0         10        20        30        40        50\n"
        "ms      0         1000      2000      3000      4000      5000\n"
        "L\u00FCfter  " +
            std::string(60, '.') +
            "\n\n"
            "tick    60\nms      6000\n        v\nL\u00FCfter  #\n  v tick 60, 6000 ms: late\n");
}

TEST(LedDiagram, DrawsAPictureOfAnyNamesAndLines) {
    const std::string svg = board::ledsToSvg({20,
                                              100,
                                              {{1, "<a&\"b\">\x1B", std::string(19, '0') + "1"}},
                                              {{3, "x < y"}, {20, "late"}}});
    for (const char* const part : {">&lt;a&amp;&quot;b&quot;&gt;\\x1b</text>", ">x &lt; y</text>",
                                   ">2</text>"}) // the end of the axis, in seconds
        EXPECT_NE(svg.find(part), std::string::npos) << part << "\n" << svg;
    EXPECT_EQ(svg.find("late"), std::string::npos);
}
