#include "base/File.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "base/Error.h"
#include "support/TempDir.h"

TEST(File, IsReadUpToItsLimitAndOneByteMore) {
    const support::TempDir dir;
    for (const std::size_t size : {0U, 1U, 4096U, 4097U, 10000U}) {
        board::writeFile(dir.path("file"), std::string(size, 'x'));
        EXPECT_EQ(board::readFile(dir.path("file"), size).size(), size);
        const board::FileDescriptor file = board::openFile(dir.path("file"), O_RDONLY);
        EXPECT_EQ(board::readUpTo(file, 100, "").size(), std::min<std::size_t>(size, 101));
        EXPECT_EQ(board::trySize(file), static_cast<off_t>(size));
        if (size > 0) {
            EXPECT_THROW(board::readFile(dir.path("file"), size - 1), board::Error) << size;
        }
    }
}
