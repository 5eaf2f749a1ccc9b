#include "RTD.h"

#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/LogRecorder.h"

TEST(Log, GoesToStandardErrorIfTheHostHasNoSink) {
    ::setenv("BOARD_LOG_LEVEL", "loud", 1); // is not a number, so the level is 3
    testing::internal::CaptureStderr();
    {
        support::LogRecorder log;
        RTD::VSYSLOG("CATEGORY", 4, "to the %s", "sink");
        EXPECT_EQ(log.take(), std::vector<std::string>{"CATEGORY 4: to the sink"});
    }
    RTD::VSYSLOG("CATEGORY", 3, "error %d", 1);
    RTD::VSYSLOG("CATEGORY", 4, "not important enough");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "CATEGORY 3: error 1\n");
}
