#include "BD.h"

#include <gtest/gtest.h>

#include "String.h"

TEST(BD, NamesTagsByTheirSettledTexts) {
    EXPECT_EQ(BD::TAG_ID_TO_STRING(1), String("MacAddress"));
    EXPECT_EQ(BD::TAG_ID_TO_STRING(0x801A), String("SipLegs"));
    EXPECT_EQ(BD::TAG_ID_TO_STRING(-3), String("Tag-3"));
}
