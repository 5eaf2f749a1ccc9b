#include "leds/preview/LedScript.h"

#include <gtest/gtest.h>

#include "base/Error.h"

TEST(LedScript, FindsTheFirstTickAtATimeOrLater) {
    const struct {
        const char* text;
        unsigned tick;
    } CASES[] = {{"7 \t a b", 7},  {"2.5s a b", 25},         {"2.500001s a b", 26},
                 {"0s a b", 1},    {"0.1ms a b", 1},         {"300ms a b", 3},
                 {"301ms a b", 4}, {"1000000 a b", 1000000}, {"999999999s a b", UINT32_MAX}};
    for (const auto& [text, tick] : CASES) {
        const auto line = board::parseTimedLine(text);
        ASSERT_TRUE(line) << text;
        EXPECT_EQ(board::atTick(*line, 100).tick, tick) << text;
        EXPECT_EQ(line->line, "a b") << text;
    }
    for (const char* const text : {"s a b", "-1s a b", "1.s a b", ".5s a b", "1.5 a b", "1e3 a b",
                                   "0 a b", "2.5s", "1 ", "1000000000s a b", "nan a b", ""})
        EXPECT_FALSE(board::parseTimedLine(text)) << text;
}

TEST(LedScript, SkipsCommentsAndNamesTheLineThatIsWrong) {
    std::string read;
    for (const auto& line :
         board::parseLedScript("# a demo\n\n  2.5s system ready\t\r\n3 a # b", "x"))
        read += line.line + "|";
    EXPECT_EQ(read, "system ready|a # b|");
    try {
        board::parseLedScript("1 a b\n# fine\nsoon a\x1b b\n", "demo.leds");
        ADD_FAILURE() << "accepts a line without a time";
    } catch (const board::Error& error) {
        EXPECT_EQ(std::string(error.what()).rfind("demo.leds:3: 'soon a\\x1b b' (expected", 0), 0U)
            << error.what();
    }
}
