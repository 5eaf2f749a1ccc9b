#include "YES_NO.h"

#include <gtest/gtest.h>

TEST(YES_NO, GivesTheSettledTexts) {
    EXPECT_STREQ(YES_NO(true), "yes");
    EXPECT_STREQ(YES_NO(false), "no");
}
