#include "base/files/FileLock.h"

#include <filesystem>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include "base/EndingSignals.h"
#include "support/Failure.h"
#include "support/TempDir.h"

using support::failureOf;

namespace {

constexpr std::size_t SMALL_LIMIT = 100;

class FileLock : public testing::Test {
protected:
    FileLock() {
        m_dir.write("file", "old");
        m_held = ::open(m_path.c_str(), O_RDONLY | O_CLOEXEC);
        ::flock(m_held, LOCK_EX);
    }
    ~FileLock() override { ::close(m_held); }

    const support::TempDir m_dir;
    const std::string m_path = m_dir.path("file");
    int m_held = -1;
    board::LockWait m_wait;
};

} // namespace

TEST_F(FileLock, IsAwaitedByAReaderWhoThenReadsTheFileThatHasTakenThePlace) {
    std::string said;
    m_wait.most = std::chrono::hours(1);
    m_wait.onWait = [&](const std::string& message) {
        said += message;
        m_dir.write("other", "new");
        std::filesystem::rename(m_dir.path("other"), m_path);
        ::flock(m_held, LOCK_SH); // other readers are no obstacle
    };
    EXPECT_EQ(board::readLocked(m_path, SMALL_LIMIT, m_wait), "new");
    EXPECT_EQ(said, m_path + ": is locked by process " + std::to_string(::getpid()) +
                        "; waiting up to 3600 s");
    EXPECT_EQ(board::readLocked(m_path, SMALL_LIMIT, m_wait), "new");
}

TEST_F(FileLock, IsGivenUpInTimeAndWhenTheProgramIsAskedToEnd) {
    const auto read = [&] { static_cast<void>(board::readLocked(m_path, SMALL_LIMIT, m_wait)); };
    m_wait.most = std::chrono::milliseconds(2);
    const std::string locked =
        m_path + ": is locked by process " + std::to_string(::getpid()) + "; gave up after 0.002 s";
    EXPECT_EQ(failureOf(read), locked);
    m_wait.most = std::chrono::hours(1);
    board::endQuestion = [] { return true; };
    EXPECT_EQ(failureOf(read), m_path + ": can't lock: Interrupted system call");
    board::endQuestion = nullptr;
}

TEST_F(FileLock, IsNotSoughtOnAPipeThatHasTakenThePlaceOfAFile) {
    m_dir.makePipe("pipe");
    EXPECT_EQ(failureOf([&] { board::openLocked(m_dir.path("pipe"), m_wait); }),
              m_dir.path("pipe") + ": is not a device file (expected a file or a block device)");
}
