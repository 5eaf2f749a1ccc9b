#include "TYTime.h"

#include <gtest/gtest.h>

#include "String.h"

TEST(TYTime, SubtractsWithABorrowAndWraps) {
    EXPECT_EQ(TYTime(12, 100000000) - TYTime(10, 900000000), TYTime(1, 200000000));
    EXPECT_EQ(TYTime(5, 5) - TYTime(5, 5), TYTime(0, 0));
    EXPECT_FALSE(TYTime(5, 5) == TYTime(5, 6) || TYTime(5, 5) == TYTime(6, 5));
    EXPECT_EQ(TYTime(0, 0) - TYTime(1, 0), TYTime(0xFFFFFFFF, 0));
}

TEST(TYTime, ReadsBothClocks) {
    TYTime time(1, 2);
    EXPECT_EQ(time.getSystemClock(0).getMessage(), String("NO CLOCK SOURCE 0"));
    EXPECT_FALSE(time.getSystemClock(3).isSuccess());
    EXPECT_EQ(time, TYTime(1, 2));
    EXPECT_TRUE(time.getSystemClock(TYTime::MONOTONIC_CLOCK).isSuccess());
    const unsigned sinceStart = time.seconds;
    EXPECT_TRUE(time.getSystemClock(TYTime::SYSTEM_CLOCK).isSuccess());
    EXPECT_GT(time.seconds, sinceStart);
    EXPECT_NE(time.nanoseconds, 2U);
}
