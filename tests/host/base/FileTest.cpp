#include "base/File.h"

#include <cerrno>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "base/Error.h"
#include "support/TempDir.h"

using board::FileKind;
using support::TempDir;

TEST(File, TellsKindsApartBehindLinks) {
    const TempDir dir;
    dir.write("file", "");
    dir.makePipe("pipe");
    std::filesystem::create_symlink("pipe", dir.path("link"));
    std::filesystem::create_symlink("nowhere", dir.path("dangling"));
    const std::pair<std::string, FileKind> CASES[] = {
        {dir.path("file"), FileKind::REGULAR},     {dir.path("."), FileKind::FOLDER},
        {dir.path("link"), FileKind::PIPE},        {"/dev/null", FileKind::CHARACTER_DEVICE},
        {dir.path("dangling"), FileKind::MISSING},
    };
    for (const auto& [path, kind] : CASES)
        EXPECT_EQ(board::kindOf(path), kind) << path;
}

TEST(File, IsReadUpToItsLimitAndOneByteMore) {
    const TempDir dir;
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

TEST(File, MakesAPipeWithTheModeThatTheUmaskLeaves) {
    const TempDir dir;
    const mode_t former = ::umask(026);
    EXPECT_TRUE(board::tryMakePipe(dir.path("pipe"), 0622));
    ::umask(former);
    EXPECT_EQ(std::filesystem::status(dir.path("pipe")).permissions(),
              std::filesystem::perms(0600));
    EXPECT_FALSE(board::tryMakePipe(dir.path("pipe"), 0622));
    EXPECT_EQ(errno, EEXIST);
}
