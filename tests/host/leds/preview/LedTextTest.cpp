#include "leds/preview/LedText.h"

#include <gtest/gtest.h>

TEST(LedText, CutsTextIntoSectionsOf60TicksWithTheirOwnLines) {
    const board::LedWaves waves{61, 100, {{1, "L\u00FCfter", ""}}, {{60, "late"}, {61, "never"}}};
    board::LedSections sections(waves);
    const std::string first = sections.next({std::string(60, '0')});
    EXPECT_EQ(
        first + sections.next({"1"}),
        "tick    0         10        20        30        40        50\n"
        "ms      0         1000      2000      3000      4000      5000\n"
        "L\u00FCfter  " +
            std::string(60, '.') +
            "\n\n"
            "tick    60\nms      6000\n        v\nL\u00FCfter  #\n  v tick 60, 6000 ms: late\n");
}
