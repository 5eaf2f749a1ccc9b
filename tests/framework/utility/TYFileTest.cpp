#include "TYFile.h"

#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>

#include "support/TempDir.h"
#include "support/WrittenPipe.h"

using support::TempDir;
using support::WrittenPipe;

TEST(TYFile, ReadsWithoutWaitingFailsWithATextAndClosesOnce) {
    const TempDir dir;
    const WrittenPipe written(dir);
    TYFile file(written.path().c_str(), true, false);
    char buffer[8];
    unsigned count = 7;
    for (const bool wait : {false, true})
        EXPECT_FALSE(file.readOnce(buffer, sizeof buffer, count, wait).isSuccess())
            << "not open, " << wait;
    EXPECT_EQ(count, 0U);
    ASSERT_TRUE(file.open(O_RDONLY, 0, 0).isSuccess());
    EXPECT_TRUE(file.readOnce(buffer, sizeof buffer, count, false).isSuccess());
    EXPECT_EQ(count, 0U);
    written.write("text");
    EXPECT_TRUE(file.readOnce(buffer, sizeof buffer, count, false).isSuccess());
    EXPECT_EQ(std::string(buffer, count), "text");
    EXPECT_TRUE(file.close().isSuccess());
    EXPECT_TRUE(file.close().isSuccess());

    TYFile missing(dir.path("missing").c_str(), true, false);
    EXPECT_NE(std::string(missing.open(O_RDONLY, 0, 0).getMessage().c_str()).find("No such file"),
              std::string::npos);
    TYFile made(dir.path("missing").c_str(), true, true);
    EXPECT_TRUE(made.open(O_WRONLY, 0644, 0).isSuccess());
}
