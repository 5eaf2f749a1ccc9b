#include "String.h"

#include <climits>

#include <gtest/gtest.h>

#include "StringTokenizer.h"
#include "TString.h"

TEST(String, ConvertsToTheSame32BitNumbersOnEveryMachine) {
    for (const auto& [text, number] : {std::pair("", 0),
                                       {" \t42x", 42},
                                       {"-7", -7},
                                       {"ff", 0},
                                       {"2147483648", INT_MAX},
                                       {"-2147483649", INT_MIN},
                                       {"99999999999999999999", INT_MAX}})
        EXPECT_EQ(String(text).toInteger(10), number) << text;
    EXPECT_EQ(String("0x1F").toInteger(16), 31);
    EXPECT_EQ(String("010").toInteger(0), 8);
    EXPECT_EQ(String("4294967295").toUInt(), UINT_MAX);
    EXPECT_EQ(String("4294967296").toUInt(), UINT_MAX);
    EXPECT_EQ(String("-1").toUInt(), 0U);
    EXPECT_EQ(String("12x").toUInt(), 12U);
    EXPECT_EQ(String("12").toInteger(), 12);
}

TEST(String, HoldsAnyBytesAndComparesThem) {
    const String zeros("a\0b", 3);
    EXPECT_EQ(zeros.length(), 3U);
    EXPECT_NE(zeros, String("a"));
    EXPECT_LT(String("a"), zeros);
    EXPECT_TRUE(zeros.startsWith("a"));
    EXPECT_FALSE(String("a").startsWith(zeros));
    EXPECT_EQ(String(nullptr), String::EMPTY());
    EXPECT_EQ(String(nullptr, 5), String::EMPTY());
    StringTokenizer words("a:bc:d", ":");
    EXPECT_EQ(words.nextToken().concat(words.nextToken()), String("abc"));
}

TEST(String, TrimsBothEndsAndChangesAsciiLettersOnly) {
    EXPECT_EQ(String(" \t\r\n\v\f").trim(), String::EMPTY());
    EXPECT_EQ(String("\xA0x\x08").trim(), String("\xA0x\x08"));
    EXPECT_EQ(String("az\xE4{`9").toUpperCase(), String("AZ\xE4{`9"));
    EXPECT_EQ(String(" a\0 b \0 ", 8).trim().toUpperCase(), String("A\0 B \0", 6));
}

TEST(String, FormatsTextsOfAnyLengthEvenFromItself) {
    String text = "ab";
    EXPECT_EQ(text.concatf("-%s-%u", text.c_str(), 7U), String("ab-ab-7"));
    for (const unsigned length : {0U, 127U, 128U, 5000U}) {
        const std::string whole(length, 'x');
        EXPECT_EQ(String::format("%s", whole.c_str()), String(whole.c_str())) << length;
    }
}

TEST(TString, NeverReadsOutsideAndComparesEveryElement) {
    TString<char> bytes("a\0c", 3);
    EXPECT_EQ(bytes[UINT_MAX], '\0');
    EXPECT_EQ(bytes.substring(1, 99), TString<char>("\0c", 2));
    EXPECT_EQ(bytes.substring(2, 1).length(), 0U);
    EXPECT_TRUE(bytes != TString<char>("a\0d", 3));
    EXPECT_FALSE(bytes != TString<char>("a\0c", 3));
    EXPECT_EQ(bytes.concat(bytes), TString<char>("a\0ca\0c", 6));
    EXPECT_EQ(TString<char>(nullptr, 3).concat(nullptr, 3).length(), 0U);
}
