#include "TYTime.h"

#include <gtest/gtest.h>

TEST(TYTime, SubtractsWithABorrowAndWraps) {
    EXPECT_EQ(TYTime(12, 100000000) - TYTime(10, 900000000), TYTime(1, 200000000));
    EXPECT_EQ(TYTime(5, 5) - TYTime(5, 5), TYTime(0, 0));
    EXPECT_EQ(TYTime(0, 0) - TYTime(1, 0), TYTime(0xFFFFFFFF, 0));
    TYTime time(1, 2);
    EXPECT_FALSE(time.getSystemClock(0).isSuccess());
    EXPECT_EQ(time, TYTime(1, 2));
    EXPECT_TRUE(time.getSystemClock(TYTime::MONOTONIC_CLOCK).isSuccess());
    EXPECT_NE(time, TYTime(1, 2));
}
