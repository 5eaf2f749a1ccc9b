#include "base/files/NewFile.h"

#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/TempDir.h"

TEST(NewFile, IsReadByNobodyWhoMayNotReadTheFileThatItIsACopyOf) {
    const support::TempDir dir;
    const std::string path = dir.path("copy");
    const struct {
        gid_t group;
        mode_t mode, copied;
    } CASES[] = {{::getegid(), 0640, 0640},
                 {::getegid(), 0755, 0644},
                 {::getegid() + 1, 0640, 0600}, // only root can give the file to that group
                 {::getegid() + 1, 0664, 0644},
                 {::getegid() + 1, 0606, 0666}};
    for (const auto& each : CASES) {
        board::putNewFile(
            {path, path, path, board::FileAccess{::geteuid(), each.group, each.mode}, true}, "old");
        struct stat made {};
        ASSERT_EQ(::stat(path.c_str(), &made), 0);
        EXPECT_EQ(made.st_mode & 07777U,
                  made.st_gid == each.group ? each.mode & 0666U : each.copied);
    }
}

TEST(NewFile, RemovesWhatAKilledProgramHadGivenToTheOwnerOfTheFileAlready) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a file away";
    const support::TempDir dir;
    const std::string path = dir.path("file"), left = dir.path(".file.new-content");
    constexpr uid_t OWNER = 12, STRANGER = 13;
    for (const uid_t owner : {OWNER, STRANGER}) {
        dir.write(".file.new-content", "half");
        ASSERT_EQ(::chown(left.c_str(), owner, 0), 0);
        board::putNewFile({path, path, path, board::FileAccess{OWNER, 0, 0600}}, "new");
        EXPECT_EQ(std::filesystem::exists(left), owner == STRANGER);
    }
}
