#include "base/FileDescriptor.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace board {

void FileDescriptor::close() noexcept {
    const int error = errno;
    if (m_number >= 0)
        static_cast<void>(::close(release()));
    errno = error;
}

std::optional<FileIdentity> tryIdentify(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino};
}

std::optional<FileIdentity> tryIdentify(const FileDescriptor& file) {
    struct stat status {};
    if (::fstat(file.number(), &status) != 0)
        return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino};
}

std::optional<FileStatus> tryExamine(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0)
        return std::nullopt;
    return FileStatus{status.st_mode, status.st_uid, status.st_gid};
}

std::optional<FileStatus> tryExamine(const FileDescriptor& file) {
    struct stat status {};
    if (::fstat(file.number(), &status) != 0)
        return std::nullopt;
    return FileStatus{status.st_mode, status.st_uid, status.st_gid};
}

FileDescriptor tryOpenPrivate(const std::string& path) {
    constexpr mode_t OWNER = 0600;
    return FileDescriptor(
        ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, OWNER));
}

bool trySetMode(const std::string& path, mode_t mode) {
    return ::chmod(path.c_str(), mode) == 0;
}

bool trySetGroup(const std::string& path, gid_t group) {
    return ::lchown(path.c_str(), static_cast<uid_t>(-1), group) == 0;
}

} // namespace board
