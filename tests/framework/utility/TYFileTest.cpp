#include "TYFile.h"

#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>

#include "support/Descriptors.h"
#include "support/TempDir.h"
#include "support/WrittenPipe.h"

TEST(TYFile, ReadsWithoutWaitingFailsWithATextAndClosesOnce) {
    const support::TempDir dir;
    const support::WrittenPipe written(dir);
    const auto before = support::openDescriptors();
    TYFile file(written.path().c_str(), true, false);
    char buffer[8];
    unsigned count = 7;
    for (const bool wait : {false, true})
        EXPECT_EQ(file.readOnce(buffer, sizeof buffer, count, wait).getMessage(),
                  String::format("READ '%s': Bad file descriptor", written.path().c_str()));
    EXPECT_EQ(count, 0U);
    for (int round = 0; round < 2; ++round) // the second time, it is opened again
        ASSERT_TRUE(file.open(O_RDONLY, 0, 0).isSuccess());
    EXPECT_TRUE(file.readOnce(buffer, sizeof buffer, count, false).isSuccess());
    EXPECT_EQ(count, 0U);
    written.write("text");
    EXPECT_TRUE(file.readOnce(buffer, sizeof buffer, count, false).isSuccess());
    EXPECT_EQ(std::string(buffer, count), "text");
    EXPECT_TRUE(file.close().isSuccess());
    EXPECT_TRUE(file.close().isSuccess());
    EXPECT_EQ(support::openDescriptors(), before);

    const String path(dir.path("missing").c_str());
    EXPECT_EQ(TYFile(path, true, false).open(O_RDONLY, 0, 0).getMessage(),
              String::format("OPEN '%s': No such file or directory", path.c_str()));
    TYFile made(path, true, true);
    EXPECT_TRUE(made.open(O_RDONLY, 0644, 0).isSuccess());
    EXPECT_TRUE(made.readOnce(buffer, sizeof buffer, count, true).isSuccess()) << "at its end";
    EXPECT_EQ(count, 0U);
    EXPECT_TRUE(made.close().isSuccess());
    EXPECT_FALSE(made.open(O_RDONLY, 0644, O_EXCL).isSuccess()) << "the file exists by now";
    EXPECT_EQ(support::openDescriptors(), before);
}
