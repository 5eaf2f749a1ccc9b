#include "String.h"

#include <climits>
#include <vector>

#include <gtest/gtest.h>

#include "StringTokenizer.h"
#include "TString.h"

TEST(String, ConvertsToTheSame32BitNumbersOnEveryMachine) {
    const struct {
        const char* text;
        int base;
        int number;
    } CASES[] = {
        {"", 10, 0},
        {"x", 10, 0},
        {" \t42x", 10, 42},
        {"-7", 10, -7},
        {"ff", 10, 0},
        {"FF", 16, 255},
        {"0x1F", 16, 31},
        {"4294967296", 10, INT_MAX},
        {"010", 0, 8},
        {"2147483648", 10, INT_MAX},
        {"-2147483649", 10, INT_MIN},
        {"99999999999999999999", 10, INT_MAX},
    };
    for (const auto& each : CASES)
        EXPECT_EQ(String(each.text).toInteger(each.base), each.number) << each.text;
    EXPECT_EQ(String("4294967295").toUInt(), UINT_MAX);
    EXPECT_EQ(String("4294967296").toUInt(), UINT_MAX);
    EXPECT_EQ(String("-1").toUInt(), 0U);
}

TEST(String, HoldsAnyBytesAndComparesThem) {
    const String zeros("a\0b", 3);
    EXPECT_EQ(zeros.length(), 3U);
    EXPECT_NE(zeros, String("a"));
    EXPECT_TRUE(zeros.startsWith("a"));
    EXPECT_FALSE(String("a").startsWith(zeros));
    EXPECT_EQ(String(nullptr), String::EMPTY());
    EXPECT_EQ(String(nullptr, 5), String::EMPTY());
}

TEST(String, TrimsBothEndsAndChangesAsciiLettersOnly) {
    EXPECT_EQ(String(" \t\r\n\v\f").trim(), String::EMPTY());
    EXPECT_EQ(String(" a b\n").trim(), String("a b"));
    EXPECT_EQ(String("\xA0x\x85").trim(), String("\xA0x\x85"));
    EXPECT_EQ(String("az\xE4{`9").toUpperCase(), String("AZ\xE4{`9"));
    EXPECT_EQ(String(" a\0b \0 ", 7).trim().toUpperCase(), String("A\0B \0", 5));
}

TEST(String, FormatsWholeTextsAlsoFromItself) {
    String text = "ab";
    text.concatf("-%s-%u", text.c_str(), 7U);
    EXPECT_EQ(text, String("ab-ab-7"));
    EXPECT_EQ(String::format("%s", std::string(5000, 'x').c_str()).length(), 5000U);
}

TEST(StringTokenizer, CountsRunsOfDelimitersAsOne) {
    const struct {
        const char* text;
        std::vector<String> tokens;
    } CASES[] = {{"", {}}, {"::", {}}, {"a", {"a"}}, {":a::b,c:", {"a", "b", "c"}}};
    for (const auto& each : CASES) {
        StringTokenizer tokenizer(each.text, ":,");
        std::vector<String> tokens;
        while (tokenizer.hasMoreTokens())
            tokens.push_back(tokenizer.nextToken());
        EXPECT_EQ(tokens, each.tokens) << each.text;
        EXPECT_EQ(tokenizer.nextToken(), String::EMPTY()) << each.text;
    }
}

TEST(TString, NeverReadsOutside) {
    TString<char> bytes("a\0c", 3);
    EXPECT_EQ(bytes[2], 'c');
    EXPECT_EQ(bytes[3], '\0');
    EXPECT_EQ(bytes[UINT_MAX], '\0');
    EXPECT_EQ(bytes.substring(1, 99), TString<char>("\0c", 2));
    EXPECT_EQ(bytes.substring(2, 1).length(), 0U);
    EXPECT_EQ(bytes.substring(UINT_MAX, UINT_MAX).length(), 0U);
    bytes.concat(bytes);
    EXPECT_EQ(bytes, TString<char>("a\0ca\0c", 6));
    EXPECT_EQ(TString<char>(nullptr, 3).length(), 0U);
}
