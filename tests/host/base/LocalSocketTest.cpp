#include "base/LocalSocket.h"

#include <memory>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "base/File.h"
#include "base/files/HostLock.h"
#include "support/Failure.h"
#include "support/TempDir.h"

using board::LocalListener;

namespace {

constexpr std::chrono::seconds LIMIT{5};

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

} // namespace

TEST(LocalListener, IsReachedByOwnerAndGroupUnderAnyUmaskAndPath) {
    for (const mode_t mask : {0U, 0077U}) {
        const support::TempDir dir;
        const std::string folder = dir.path(std::string(200, 'd'));
        const mode_t former = ::umask(mask);
        const LocalListener listener(folder + "/host");
        ::umask(former);
        EXPECT_EQ(modeOf(folder), 0750U);
        EXPECT_EQ(modeOf(listener.path()), 0660U);
        EXPECT_FALSE(listener.tryAccept().isOpen());
        const board::FileDescriptor client = board::tryConnect(listener.path(), LIMIT);
        EXPECT_TRUE(client.isOpen());
        EXPECT_TRUE(listener.tryAccept().isOpen());
    }
    const support::TempDir dir;
    EXPECT_EQ(support::failureOf([&] { LocalListener(dir.path(std::string(200, 'n'))); }),
              dir.path(std::string(200, 'n')) +
                  ": can't listen on this socket: File name too long");
}

TEST(LocalListener, ReplacesOnlyTheSocketOfAProgramThatHasEnded) {
    const support::TempDir dir;
    const std::string path = dir.path("host"), other = dir.path("other");
    auto first = std::make_unique<LocalListener>(path);
    EXPECT_EQ(support::failureOf([&] { LocalListener second(path); }),
              path + ": another program listens on this socket");
    // A program that was killed leaves its file.
    ASSERT_TRUE(board::tryRename(path, other));
    first.reset();
    const LocalListener second(other);
    EXPECT_TRUE(board::tryConnect(other, LIMIT).isOpen());
    dir.write("file", "");
    EXPECT_EQ(support::failureOf([&] { LocalListener third(dir.path("file")); }),
              dir.path("file") + ": is not a socket (expected a socket or no file)");
    const board::FileDescriptor folder = board::tryOpen(dir.path(""), O_RDONLY | O_DIRECTORY);
    board::HostLock lock;
    ASSERT_TRUE(lock.tryTake(folder));
    EXPECT_EQ(support::failureOf([&] { LocalListener fourth(path, std::chrono::seconds(0)); }),
              dir.path("") + ": another program keeps this folder locked (`lslocks` lists who; the "
                             "lock is needed to make the socket in it)");
}

TEST(LocalListener, RemovesItsFileUnlessAnotherTookItsPlace) {
    const support::TempDir dir;
    const std::string path = dir.path("host");
    { const LocalListener listener(path); }
    EXPECT_EQ(board::kindOf(path), board::FileKind::MISSING);
    {
        const LocalListener listener(path);
        ASSERT_TRUE(board::tryRename(path, dir.path("old")));
        dir.write("host", "mine");
    }
    EXPECT_EQ(dir.read("host"), "mine");
}
