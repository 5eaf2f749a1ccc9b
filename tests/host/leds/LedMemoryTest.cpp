#include "leds/LedMemory.h"

#include <gtest/gtest.h>

#include "base/Error.h"

namespace {

const std::string HEADER = "LEDs held by the LED service, table 00c0ffee\n";

} // namespace

TEST(LedMemory, IsReadAsItWasWritten) {
    const std::string text = HEADER + "1 2 80000004 rg 4294967295.000000007 a b \xFF\r 1\n"
                                      "0 0 0 -- 0.999999999  x\n";
    const board::LedMemory memory = board::ledMemoryFrom(text);
    EXPECT_EQ(memory.holds.at(0).off, 0x80000004U);
    EXPECT_EQ(memory.holds.at(0).line, "a b \xFF\r 1");
    EXPECT_EQ(board::toText(memory), text);
    for (std::size_t length = 0; length < text.size(); ++length) {
        const std::string part = text.substr(0, length);
        if (part.empty() || part.back() != '\n') { // cut off in a line
            EXPECT_THROW(board::ledMemoryFrom(part), board::Error) << part;
        }
    }
}

TEST(LedMemory, RejectsWhatTheServiceDoesNotWrite) {
    const std::string good = "1 2 4 -- 5.000000006 a b\n";
    const struct {
        std::string text, fault;
    } CASES[] = {
        {"LEDs held by somebody\n", "line 1 is not from the LED service (expected its header"},
        {HEADER + good + "\n", "line 3 is not from the LED service (expected a number)"},
        {HEADER + "-1 2 4 -- 5.000000006 a b\n", "line 2"},
        {HEADER + "100000000 2 4 -- 5.000000006 a b\n", "(expected a number)"},
        {HEADER + "3 2 4 -- 5.000000006 a b\n", "(expected each LED in one state)"},
        {HEADER + "1 2 6 -- 5.000000006 a b\n", "(expected each LED in one state)"},
        {HEADER + "1 2 4 gr 5.000000006 a b\n", "(expected the marks"},
        {HEADER + "1 2 4 -- 5.1000000000 a b\n", "(expected a time)"},
        {HEADER + "1 2 4 -- 5.000000006 \n", "(expected a command line"},
        {HEADER + "1 2 4 -- 5.000000006 " + std::string(81, 'a') + "\n", "at most 80 bytes)"},
    };
    for (const auto& each : CASES)
        try {
            board::ledMemoryFrom(each.text);
            ADD_FAILURE() << each.text;
        } catch (const board::Error& error) {
            EXPECT_NE(std::string(error.what()).find(each.fault), std::string::npos)
                << error.what();
        }
    std::string many = HEADER;
    for (int i = 0; i < 513; ++i)
        many += good;
    EXPECT_THROW(board::ledMemoryFrom(many), board::Error);
    many.resize(many.size() - good.size());
    EXPECT_EQ(board::ledMemoryFrom(many).holds.size(), 512U);
}
