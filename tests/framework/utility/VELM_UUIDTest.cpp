#include "VELM_UUID.h"

#include <gtest/gtest.h>

TEST(VelmUuid, ComparesByValueAndNeverCountsTheHandlesOfAStaticOne) {
    const auto value = VELM_UUID::parse("00112233-4455-6677-8899-aAbBcCdDeEfF");
    VELM_UUID::Rep counted{value, {1}, "counted"}; // the test's own reference keeps it alive
    VELM_UUID::Rep fixed{value, {VELM_UUID::STATIC_COUNT}, "static"};
    fixed.value.bytes[15] ^= 1;
    {
        const VELM_UUID first(counted);
        VELM_UUID second(first);
        EXPECT_EQ(counted.count, 3U);
        EXPECT_EQ(second, VELM_UUID(value, "another name"));
        const VELM_UUID constant(fixed);
        second = constant;
        EXPECT_EQ(counted.count, 2U);
        EXPECT_NE(second, first);
        EXPECT_STREQ(second.getName(), "static");
        const VELM_UUID& itself = second;
        second = itself;
    }
    EXPECT_EQ(counted.count, 1U);
    EXPECT_EQ(fixed.count, VELM_UUID::STATIC_COUNT);
}
