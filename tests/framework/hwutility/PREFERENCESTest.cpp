#include "PREFERENCES.h"

#include <climits>

#include <gtest/gtest.h>

#include "support/LogRecorder.h"
#include "support/TempDir.h"

using Lines = std::vector<std::string>;

TEST(Preferences, ReadNumbersInRangeAndLogAllOthers) {
    constexpr unsigned NONE = 7; // the default, which no row holds
    const support::TempDir dir;
    support::LogRecorder log;
    String error;
    const auto read = [&](const std::string& text) {
        dir.write("preferences", " voip.sip-legs =" + text + "\n");
        EXPECT_TRUE(PREFERENCES::LOAD(dir.path("preferences").c_str(), error).isSuccess());
        unsigned value = 0;
        const bool isSet =
            PREFERENCES::READPREF_UINT(PREFERENCES::VOIP_SIP_LEGS, value, NONE, 0, UINT_MAX);
        EXPECT_EQ(isSet, value != NONE) << text;
        return value;
    };
    for (const auto& [text, number] : {std::pair("10", 10U),
                                       {" 0x1F ", 31},
                                       {"0XfF", 255},
                                       {"4294967295", UINT_MAX},
                                       {"0", 0},
                                       {"010", 10}})
        EXPECT_EQ(read(text), number) << text;
    EXPECT_EQ(log.take(), Lines{});
    for (const std::string text :
         {"", "many", "12x", "-1", "4294967296", "0x", "99999999999999999999"}) {
        EXPECT_EQ(read(text), NONE) << text;
        EXPECT_EQ(log.take(), Lines{"PREFERENCES 3: PREFERENCE 'voip.sip-legs': '" + text +
                                    "' IGNORED, EXPECTED A NUMBER FROM 0 TO 4294967295"});
    }
    PREFERENCES::CLEAR();
    unsigned value = 0;
    EXPECT_FALSE(PREFERENCES::READPREF_UINT(PREFERENCES::VOIP_SIP_LEGS, value, 4, 0, 1));
    EXPECT_EQ(value, 4U);
    EXPECT_EQ(log.take(), Lines{}) << "a missing key is not an error";
}

TEST(Preferences, AreReadLineByLineAndKeptIfAFileCantBeRead) {
    const support::TempDir dir;
    const std::string path = dir.path("preferences");
    dir.write("preferences",
              "# comment = 1\n\n a = 1\nwhat\na = 2\nb=c=d\n  e = 5" + std::string(65490, ' '));
    support::LogRecorder log;
    String error;
    ASSERT_TRUE(PREFERENCES::LOAD(path.c_str(), error).isSuccess());
    EXPECT_EQ(log.take(),
              Lines{"PREFERENCES 3: " + path + ":4: 'what' IS NOT A 'key = value' LINE"});
    dir.write("large", std::string(65537, '#'));
    for (const auto& [name, reason] : {std::pair("missing", "No such file or directory"),
                                       {".", "Is a directory"},
                                       {"large", "LARGER THAN 65536 BYTES"}}) {
        EXPECT_FALSE(PREFERENCES::LOAD(dir.path(name).c_str(), error).isSuccess());
        EXPECT_EQ(error, String::format("FAILED TO READ PREFERENCES '%s': %s",
                                        dir.path(name).c_str(), reason));
    }
    unsigned value = 0;
    EXPECT_TRUE(PREFERENCES::READPREF_UINT("a", value, 0, 2, 2));
    EXPECT_EQ(value, 2U);
    for (const auto& [minimum, maximum] : {std::pair(0U, 1U), {3U, 9U}})
        EXPECT_FALSE(PREFERENCES::READPREF_UINT("a", value, 0, minimum, maximum));
    EXPECT_TRUE(PREFERENCES::READPREF_UINT("e", value, 0, 0, 9));
    EXPECT_EQ(value, 5U);
    PREFERENCES::CLEAR();
}
