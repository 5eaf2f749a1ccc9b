#include "base/FileDescriptor.h"

#include <cerrno>

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

} // namespace board
