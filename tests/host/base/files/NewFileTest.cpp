#include "base/files/NewFile.h"

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
                 {::getegid() + 1, 0640, 0600}, // only root can give it to that group
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
