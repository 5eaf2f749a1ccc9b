#include "FileReplacement.h"

#include <filesystem>
#include <iterator>
#include <thread>

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fcntl.h>

#include "Error.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;
using support::TempDir;

namespace {

std::ptrdiff_t entriesOf(const std::string& folder) {
    return std::distance(fs::directory_iterator(folder), {});
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

TEST(FileReplacement, MakesAMissingFileAlsoBehindALink) {
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

TEST(FileReplacement, ReportsADeviceThatDoesNotTakeTheBytes) {
    EXPECT_NO_THROW(board::replaceFile("/dev/null", "new"));
    try {
        board::replaceFile("/dev/full", "new");
        ADD_FAILURE() << "a full device took the bytes";
    } catch (const board::Error& error) {
        EXPECT_STREQ(error.what(), "/dev/full: can't write: No space left on device");
    }
}

TEST(FileReplacement, WaitsForTheLockAndThenTakesTheFileThatStandsThere) {
    const TempDir dir;
    dir.write("image", "first");
    const int held = ::open(dir.path("image").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    std::thread writer([&] { board::replaceFile(dir.path("image"), "third"); });
    // Meanwhile the lock's holder puts another file in place, which the waiting writer must lock anew.
    dir.write("second", "second");
    ::chmod(dir.path("second").c_str(), 0600);
    fs::rename(dir.path("second"), dir.path("image"));
    ::close(held);
    writer.join();
    EXPECT_EQ(dir.read("image"), "third");
    EXPECT_EQ(fs::status(dir.path("image")).permissions(), fs::perms(0600));
}
