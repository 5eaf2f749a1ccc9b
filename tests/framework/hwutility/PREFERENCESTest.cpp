#include "PREFERENCES.h"

#include <climits>

#include <gtest/gtest.h>

#include "support/LogRecorder.h"
#include "support/TempDir.h"

using support::LogRecorder;
using support::TempDir;

namespace {

void load(const TempDir& dir, const std::string& text) {
    dir.write("preferences", text);
    String error;
    ASSERT_TRUE(PREFERENCES::LOAD(dir.path("preferences").c_str(), error).isSuccess())
        << error.c_str();
}

} // namespace

TEST(Preferences, TakesNumbersInRangeAndLogsAndIgnoresAllElse) {
    const struct {
        const char* text;
        bool isSet;
        unsigned value;
    } CASES[] = {{"10", true, 10},
                 {" 0x1F ", true, 31},
                 {"0XfF", true, 255},
                 {"4294967295", true, UINT_MAX},
                 {"0", true, 0},
                 {"010", true, 10},
                 {"", false, 7},
                 {"many", false, 7},
                 {"12x", false, 7},
                 {"-1", false, 7},
                 {"+1", false, 7},
                 {"4294967296", false, 7},
                 {"1 2", false, 7},
                 {"0x", false, 7},
                 {"99999999999999999999999", false, 7}};
    const TempDir dir;
    for (const auto& each : CASES) {
        load(dir, std::string(" voip.sip-legs =") + each.text + "\n");
        LogRecorder log;
        unsigned value = 7;
        EXPECT_EQ(PREFERENCES::READPREF_UINT(PREFERENCES::VOIP_SIP_LEGS, value, value, 0, UINT_MAX),
                  each.isSet)
            << each.text;
        EXPECT_EQ(value, each.value) << each.text;
        const auto lines = log.take();
        ASSERT_EQ(lines.size(), each.isSet ? 0U : 1U) << each.text;
        EXPECT_TRUE(each.isSet ||
                    lines[0].find(" 3: PREFERENCE 'voip.sip-legs': '") != lines[0].npos)
            << each.text;
    }
    LogRecorder log;
    unsigned value = 0;
    load(dir, "limited = 10\n");
    EXPECT_FALSE(PREFERENCES::READPREF_UINT("limited", value, 3, 11, 20));
    EXPECT_EQ(value, 3U);
    EXPECT_FALSE(PREFERENCES::READPREF_UINT("missing", value, 4, 0, 1));
    EXPECT_EQ(value, 4U);
    EXPECT_EQ(log.take().size(), 1U) << "a key that is not set is no mistake";
    PREFERENCES::CLEAR();
}

TEST(Preferences, ReadsAFileLineByLineAndKeepsTheStoreWhereItCanNot) {
    const TempDir dir;
    LogRecorder log;
    load(dir, "# comment = 1\n\n a = 1\nwhat\na = 2\nb=c=d\n  e = 5");
    const auto lines = log.take();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_NE(lines[0].find("preferences:4: 'what'"), std::string::npos);
    String error;
    for (const std::string name : {"missing", "."}) {
        EXPECT_FALSE(PREFERENCES::LOAD(dir.path(name).c_str(), error).isSuccess()) << name;
        EXPECT_TRUE(error.startsWith("FAILED TO READ PREFERENCES '")) << error.c_str();
    }
    unsigned value = 0;
    EXPECT_TRUE(PREFERENCES::READPREF_UINT("a", value, 0, 0, 9));
    EXPECT_EQ(value, 2U);
    EXPECT_TRUE(PREFERENCES::READPREF_UINT("e", value, 0, 0, 9));
    EXPECT_EQ(value, 5U);
    PREFERENCES::CLEAR();
    EXPECT_FALSE(PREFERENCES::READPREF_UINT("a", value, 0, 0, 9));
}
