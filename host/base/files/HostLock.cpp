#include "base/files/HostLock.h"

#include <cstdint>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/File.h"

namespace board {

namespace {

constexpr char NAME[] = "/boarddrivers.lock";

bool isOwn(const std::optional<FileStatus>& status) {
    return status && status->owner == ::geteuid();
}

/// Opens the file whose bytes are the locks. The result is not open if this user has no folder for
/// that file. The places that don't depend on how a host was started come first, so that the
/// hosts of a user find the same file whenever possible.
FileDescriptor openLocks() {
    const char* const folder = std::getenv("XDG_RUNTIME_DIR");
    for (const std::string& place :
         {std::string("/run"), std::string("/run/boarddrivers"),
          "/run/user/" + std::to_string(::geteuid()), std::string(folder ? folder : "")}) {
        if (place.empty() || !isOwn(tryExamine(place)))
            continue;
        FileDescriptor locks = tryOpenPrivate(place + NAME);
        if (locks.isOpen() && isOwn(tryExamine(locks)))
            return locks;
    }
    return FileDescriptor();
}

/// The position of the byte that stands for `file`.
off_t byteOf(const FileIdentity& file) {
    constexpr std::uint64_t PRIME = 0x100000001b3; // of FNV-1a
    const std::uint64_t mixed =
        (static_cast<std::uint64_t>(file.device) * PRIME ^ file.number) * PRIME;
    return static_cast<off_t>(mixed >> 33U); // 31 bits, which every off_t can hold
}

} // namespace

bool HostLock::tryTake(const FileDescriptor& file) {
    const std::optional<FileIdentity> identity = tryIdentify(file);
    if (!identity)
        return false;
    m_locks = openLocks();
    if (!m_locks.isOpen())
        return tryLock(file);
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = byteOf(*identity);
    lock.l_len = 1;
    return ::fcntl(m_locks.number(), F_OFD_SETLK, &lock) == 0;
}

} // namespace board
