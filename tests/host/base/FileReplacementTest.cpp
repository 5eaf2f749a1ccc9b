#include "base/FileReplacement.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <iterator>
#include <thread>

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fcntl.h>

#include "base/Error.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;
using support::TempDir;

namespace {

std::ptrdiff_t entriesOf(const std::string& folder) {
    return std::distance(fs::directory_iterator(folder), {});
}

/// The number of descriptors that this process has open on `path`.
int descriptorsOf(const std::string& path) {
    int count = 0;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd"))
        count += fs::equivalent(entry.path(), path, ignored) ? 1 : 0;
    return count;
}

/// Replaces `path` while another descriptor holds its lock, and calls `meanwhile` once the
/// replacement has opened the file that was there first.
void replaceWhileLocked(const std::string& path, const std::string& bytes,
                        const std::function<void()>& meanwhile) {
    const int held = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    auto writer = std::async(std::launch::async, [&] { board::replaceFile(path, bytes); });
    const auto isDone = [&] {
        return writer.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    };
    while (descriptorsOf(path) < 2 && !isDone())
        std::this_thread::yield();
    meanwhile();
    EXPECT_FALSE(isDone()) << "did not wait for the lock";
    ::close(held);
    EXPECT_NO_THROW(writer.get());
}

} // namespace

TEST(FileReplacement, KeepsModeAndLinkAndLeavesNothingBeside) {
    const TempDir dir;
    dir.makeFolder("elsewhere");
    dir.write("elsewhere/image", "old and longer");
    ::chmod(dir.path("elsewhere/image").c_str(), 0640);
    fs::create_symlink("elsewhere/image", dir.path("link"));
    board::replaceFile(dir.path("link"), "new");
    EXPECT_EQ(dir.read("elsewhere/image"), "new");
    EXPECT_TRUE(fs::is_symlink(dir.path("link")));
    EXPECT_EQ(fs::status(dir.path("elsewhere/image")).permissions(), fs::perms(0640));
    EXPECT_EQ(entriesOf(dir.path("elsewhere")), 1);
}

TEST(FileReplacement, MakesAMissingFileEvenBehindALink) {
    const TempDir dir;
    fs::create_symlink("target", dir.path("link"));
    const mode_t former = ::umask(022);
    board::replaceFile(dir.path("link"), "new");
    ::umask(former);
    EXPECT_TRUE(fs::is_symlink(dir.path("link")));
    EXPECT_EQ(dir.read("target"), "new");
    EXPECT_EQ(fs::status(dir.path("target")).permissions(), fs::perms(0644));
}

TEST(FileReplacement, RefusesWhatCanNotBeReplacedAndSaysWhy) {
    const TempDir dir;
    dir.makePipe("pipe");
    fs::create_symlink("circle", dir.path("circle"));
    for (const std::string name : {"pipe", ".", "missing/image", "circle"})
        EXPECT_THROW(board::replaceFile(dir.path(name), "new"), board::Error) << name;
    EXPECT_EQ(entriesOf(dir.path(".")), 2);
}

TEST(FileReplacement, ReportsADeviceThatDoesNotAcceptTheBytes) {
    EXPECT_NO_THROW(board::replaceFile("/dev/null", "new"));
    try {
        board::replaceFile("/dev/full", "new");
        ADD_FAILURE() << "a full device accepted the bytes";
    } catch (const board::Error& error) {
        EXPECT_STREQ(error.what(), "/dev/full: can't write: No space left on device");
    }
}

TEST(FileReplacement, WritesADeviceThatCanNotSeekAndReportsWhatItDoesNotAccept) {
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(::grantpt(terminal), 0);
    ASSERT_EQ(::unlockpt(terminal), 0);
    const std::string device = ::ptsname(terminal);
    const int keptOpen = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    board::replaceFile(device, "new");
    char got[8];
    EXPECT_EQ(::read(terminal, got, sizeof got), 3);
    try {
        board::replaceFile(device, std::string(1U << 20U, 'x'));
        ADD_FAILURE() << "a terminal accepted everything";
    } catch (const board::Error& error) {
        EXPECT_EQ(std::string(error.what()).rfind(device + ": accepted only ", 0), 0U)
            << error.what();
    }
    ::close(keptOpen);
    ::close(terminal);
}

TEST(FileReplacement, LeavesTheFileAsItWasIfTheNewContentCanNotBeWritten) {
    const TempDir dir;
    dir.write("image", "old");
    rlimit former{};
    ::getrlimit(RLIMIT_FSIZE, &former);
    const auto formerHandler = ::signal(SIGXFSZ, SIG_IGN);
    const rlimit tight{1000, former.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &tight);
    EXPECT_THROW(board::replaceFile(dir.path("image"), std::string(5000, 'x')), board::Error);
    ::setrlimit(RLIMIT_FSIZE, &former);
    ::signal(SIGXFSZ, formerHandler);
    EXPECT_EQ(dir.read("image"), "old");
    EXPECT_EQ(entriesOf(dir.path(".")), 1);
}

TEST(FileReplacement, WaitsForTheLockAndThenReplacesTheFileThatIsThere) {
    const TempDir dir;
    dir.write("image", "first");
    dir.write("second", "second");
    ::chmod(dir.path("second").c_str(), 0600);
    replaceWhileLocked(dir.path("image"), "third",
                       [&] { fs::rename(dir.path("second"), dir.path("image")); });
    EXPECT_EQ(dir.read("image"), "third");
    EXPECT_EQ(fs::status(dir.path("image")).permissions(), fs::perms(0600));
}

TEST(FileReplacement, FollowsALinkThatChangesWhileItWaits) {
    const TempDir dir;
    dir.write("first", "first");
    dir.write("second", "second");
    fs::create_symlink("first", dir.path("link"));
    fs::create_symlink("second", dir.path("turned"));
    replaceWhileLocked(dir.path("link"), "third",
                       [&] { fs::rename(dir.path("turned"), dir.path("link")); });
    EXPECT_EQ(dir.read("first"), "first");
    EXPECT_EQ(dir.read("second"), "third");
}
