#include "VELM_UUID.h"

#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>

TEST(VelmUuid, KeepsTheFirstThreeGroupsLittleEndianAndComparesByValue) {
    const auto value = VELM_UUID::parse("00112233-4455-6677-8899-aAbBcCdDeEfF");
    const std::uint8_t expected[] = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66,
                                     0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
    EXPECT_EQ(std::memcmp(value.bytes, expected, sizeof expected), 0);
    const VELM_UUID one(value, "one");
    EXPECT_EQ(one, VELM_UUID(value, "two"));
    auto other = value;
    other.bytes[15] ^= 1;
    EXPECT_NE(one, VELM_UUID(other, "one"));
}

TEST(VelmUuid, CountsItsHandlesButNeverThoseOfAStaticOne) {
    VELM_UUID::Rep counted{{}, {1}, "counted"}; // the test's own reference keeps it alive
    VELM_UUID::Rep fixed{{}, {VELM_UUID::STATIC_COUNT}, "static"};
    {
        const VELM_UUID first(counted);
        VELM_UUID second(first);
        EXPECT_EQ(counted.count, 3U);
        const VELM_UUID constant(fixed);
        second = constant;
        EXPECT_EQ(counted.count, 2U);
        EXPECT_STREQ(second.getName(), "static");
        const VELM_UUID& itself = second;
        second = itself;
        EXPECT_EQ(fixed.count, VELM_UUID::STATIC_COUNT);
    }
    EXPECT_EQ(counted.count, 1U);
    EXPECT_EQ(fixed.count, VELM_UUID::STATIC_COUNT);
}
