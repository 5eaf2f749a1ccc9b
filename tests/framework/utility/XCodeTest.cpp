#include "XCode.h"

#include <cstdint>
#include <cstring>

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

TEST(XCode, IsAnOddWordWithoutAMessageAndARecordWithOne) {
    EXPECT_EQ(wordOf(XCode()), 1U);
    EXPECT_EQ(wordOf(XCode(-1)), ~std::uintptr_t{0});
    EXPECT_EQ(wordOf(XCode(5)), 11U);
    EXPECT_EQ(wordOf(XCode(-1, "TEXT")) & 1U, 0U);
    EXPECT_TRUE(XCode(0, "TEXT").isSuccess());
    constexpr std::int64_t LIMIT = 1 << 30;
    for (const std::int64_t code :
         {std::int64_t{0}, -LIMIT, LIMIT - 1, -LIMIT - 1, LIMIT, std::int64_t{INT32_MIN}}) {
        const XCode status(static_cast<std::int32_t>(code));
        EXPECT_EQ(wordOf(status) & 1U, code >= -LIMIT && code < LIMIT ? 1U : 0U) << code;
        EXPECT_EQ(status.getCode(), code);
    }
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
