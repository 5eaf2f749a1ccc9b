#include "XCode.h"

#include <cstdint>
#include <cstring>
#include <utility>

#include <gtest/gtest.h>

#include "String.h"

namespace {

std::uintptr_t wordOf(const XCode& status) {
    static_assert(sizeof(XCode) == sizeof(std::uintptr_t), "a status is one word");
    std::uintptr_t word;
    std::memcpy(&word, &status, sizeof word);
    return word;
}

} // namespace

TEST(XCode, IsAWordWithoutAMessageAndARecordWithOne) {
    EXPECT_EQ(wordOf(XCode()), 1U);
    EXPECT_EQ(wordOf(XCode(0)), 1U);
    EXPECT_EQ(wordOf(XCode(-1)), ~std::uintptr_t{0});
    EXPECT_EQ(wordOf(XCode(5)), 11U);
    for (const std::int32_t code : {-(1 << 30), (1 << 30) - 1})
        EXPECT_EQ(wordOf(XCode(code)) & 1U, 1U) << code;
    for (const std::int32_t code : {-(1 << 30) - 1, 1 << 30, INT32_MIN, INT32_MAX})
        EXPECT_EQ(wordOf(XCode(code)) & 1U, 0U) << code;
    EXPECT_EQ(wordOf(XCode(-1, "TEXT")) & 1U, 0U);
    for (const std::int32_t code :
         {0, 1, -1, -(1 << 30), (1 << 30) - 1, -(1 << 30) - 1, 1 << 30, INT32_MIN})
        EXPECT_EQ(XCode(code).getCode(), code);
}

TEST(XCode, CopiesOwnTheirMessage) {
    XCode copy;
    {
        XCode original(-2, "TEXT");
        copy = original;
        original = XCode();
        EXPECT_EQ(original.getMessage(), String::EMPTY());
    }
    XCode moved(std::move(copy));
    const XCode& itself = moved;
    moved = itself;
    EXPECT_EQ(moved.getCode(), -2);
    EXPECT_EQ(moved.getMessage(), String("TEXT"));
}
