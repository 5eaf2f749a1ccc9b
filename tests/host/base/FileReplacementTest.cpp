#include "base/FileReplacement.h"

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <vector>

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fcntl.h>

#include "support/Failure.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;
using support::TempDir;

namespace {

std::ptrdiff_t entriesOf(const std::string& folder) {
    return std::distance(fs::directory_iterator(folder), {});
}

std::string failureOf(const std::string& path, const std::string& bytes) {
    return support::failureOf([&] { board::replaceFile(path, bytes); });
}

} // namespace

TEST(FileReplacement, KeepsModeAndLinkAndLeavesNothingBeside) {
    const TempDir dir;
    dir.makeFolder("elsewhere");
    fs::create_symlink("elsewhere/image", dir.path("link"));
    const mode_t former = ::umask(022);
    for (const auto mode : {fs::perms(0644), fs::perms(0640)}) { // a new file, then the old one
        board::replaceFile(dir.path("link"), "new");
        EXPECT_EQ(dir.read("elsewhere/image"), "new");
        EXPECT_EQ(fs::status(dir.path("elsewhere/image")).permissions(), mode);
        dir.write("elsewhere/image", "old and longer");
        ::chmod(dir.path("elsewhere/image").c_str(), 0640);
    }
    ::umask(former);
    EXPECT_TRUE(fs::is_symlink(dir.path("link")));
    EXPECT_EQ(entriesOf(dir.path("elsewhere")), 1);
}

TEST(FileReplacement, RefusesWhatCanNotBeReplacedAndSaysWhy) {
    const TempDir dir;
    dir.makePipe("pipe");
    fs::create_symlink("circle", dir.path("circle"));
    for (const auto& [name, reason] :
         {std::pair{"pipe", ": can't be replaced (expected a file or a device)"},
          std::pair{".", ": can't be replaced (expected a file or a device)"},
          std::pair{"missing/image",
                    ": can't create a new file in its folder: No such file or directory"},
          std::pair{"pipe/image", ": can't follow the path: Not a directory"},
          std::pair{"circle", ": can't follow the path: Too many levels of symbolic links"}})
        EXPECT_EQ(failureOf(dir.path(name), "new"), dir.path(name) + reason);
    EXPECT_EQ(entriesOf(dir.path(".")), 2);
    EXPECT_EQ(failureOf("/dev/null", "new"), "no failure");
    EXPECT_EQ(failureOf("/dev/full", "new"), "/dev/full: can't write: No space left on device");
}

TEST(FileReplacement, RemovesWhatAKilledProgramHasLeftAndNothingElse) {
    const TempDir dir;
    const std::string left = ".image.new-content";
    dir.write(left, "half");
    board::replaceFile(dir.path("image"), "first");
    EXPECT_EQ(entriesOf(dir.path(".")), 1);
    dir.write("victim", "kept");
    for (const auto make : {::link, ::symlink}) {
        ASSERT_EQ(make(dir.path("victim").c_str(), dir.path(left).c_str()), 0);
        board::replaceFile(dir.path("image"), "second");
        EXPECT_EQ(dir.read("image") + dir.read("victim"), "secondkept");
        EXPECT_EQ(::unlink(dir.path(left).c_str()), 0);
    }
    EXPECT_EQ(entriesOf(dir.path(".")), 2);
    dir.write(left + ".a1B2c3", "half");
    const std::vector<std::string> foreign = {"image.backup", left + ".a1B2c", left + ".a1B2c-",
                                              left + ".Z9y8x7"};
    for (const std::string& each : foreign)
        dir.write(each, "kept");
    const int used = ::open(dir.path(foreign.back()).c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(used, LOCK_EX), 0);
    board::replaceFile(dir.path("image"), "third");
    for (const std::string& each : foreign)
        EXPECT_EQ(dir.read(each), "kept") << each;
    EXPECT_EQ(entriesOf(dir.path(".")), 6);
    ::close(used);
    board::replaceFile(dir.path("image"), "fourth");
    EXPECT_EQ(entriesOf(dir.path(".")), 5);
}

TEST(FileReplacement, UsesNothingOfAStrangerInAFolderToWhichEverybodyMayWrite) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can make something for another user";
    const TempDir dir;
    dir.write("target", "old");
    dir.write("file", "old");
    fs::create_symlink("target", dir.path("symbolic link"));
    constexpr uid_t STRANGER = 65534;
    ASSERT_EQ(::chmod(dir.path(".").c_str(), 01777), 0);
    for (const std::string what : {"symbolic link", "file"}) {
        const std::string path = dir.path(what);
        ASSERT_EQ(::lchown(path.c_str(), STRANGER, STRANGER), 0);
        EXPECT_EQ(failureOf(path, "new"), path + ": leads to a " + what +
                                              " of user 65534 in a folder to which everybody may "
                                              "write (expected a file of this user)");
        EXPECT_EQ(dir.read(what == "file" ? "file" : "target"), "old");
    }
}

TEST(FileReplacement, LeavesAFileWithSeveralNamesOrWithAForeignLockAsItIs) {
    const TempDir dir;
    dir.write("image", "old");
    const std::string path = dir.path("image");
    const int held = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(held, LOCK_SH), 0);
    board::LockWait wait;
    wait.most = std::chrono::milliseconds(0);
    EXPECT_EQ(support::failureOf([&] {
                  const board::FileReplacement locked(path, board::FileReplacement::Manner::BY_KIND,
                                                      wait);
              }),
              path + ": is locked by process " + std::to_string(::getpid()));
    board::replaceFile(path, "old"); // takes no lock, as it does not need the old content
    ::close(held);
    fs::create_hard_link(path, dir.path("same"));
    EXPECT_EQ(failureOf(path, "new"),
              path + ": has 2 names (hard links), and the others would keep the old content "
                     "(expected a file with one name, such as a copy)");
    EXPECT_EQ(dir.read("image") + dir.read("same"), "oldold");
}

TEST(FileReplacement, DoesNotWaitForAPipeThatHasTakenThePlaceOfTheLockedFile) {
    const TempDir dir;
    dir.write("image", "old");
    const board::FileReplacement locked(dir.path("image"));
    fs::remove(dir.path("image"));
    dir.makePipe("image");
    EXPECT_EQ(support::failureOf([&] { static_cast<void>(locked.content(100)); }),
              dir.path("image") + ": has become something else (expected a file or a device)");
}

TEST(FileReplacement, WritesADeviceThatCanNotSeekAndReportsWhatItDoesNotAccept) {
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(::grantpt(terminal) | ::unlockpt(terminal), 0);
    const std::string device = ::ptsname(terminal);
    const int keptOpen = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    board::replaceFile(device, "new");
    char got[8];
    EXPECT_EQ(::read(terminal, got, sizeof got), 3);
    EXPECT_EQ(failureOf(device, std::string(1U << 20U, 'x')).rfind(device + ": accepted only ", 0),
              0U);
    ::close(keptOpen);
    ::close(terminal);
}

TEST(LineFile, FindsAWholeLineInAFileAndReadsNoDevice) {
    const TempDir dir;
    const std::string line(70000, 'x');
    dir.write("log", "a\n" + line + "y\n" + line + "\ncut off");
    const board::LineFile file(dir.path("log"));
    EXPECT_TRUE(file.holds("a"));
    EXPECT_TRUE(file.holds(line));
    EXPECT_FALSE(file.holds("x"));
    EXPECT_FALSE(file.holds("cut off"));
    EXPECT_FALSE(board::LineFile("/dev/zero").holds("a"));
}
