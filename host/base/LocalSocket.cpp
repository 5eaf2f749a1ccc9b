#include "base/LocalSocket.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <thread>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include "base/Error.h"
#include "base/File.h"
#include "base/Text.h"
#include "base/files/HostLock.h"

namespace board {

namespace {

constexpr mode_t SOCKET_MODE = 0660, FOLDER_MODE = 0750;
constexpr int MOST_CLIENTS_WAITING = 64;
constexpr std::chrono::milliseconds NEXT_TRY{5};

/// Like folderOf(), but never empty.
std::string placeOf(const std::string& path) {
    const std::string folder = folderOf(path);
    return folder.empty() ? "./" : folder;
}

/// The socket address of a path. If the path is too long, the address leads through a descriptor of
/// the folder, which this object keeps open.
class Address {
public:
    explicit Address(const std::string& path) {
        std::string name = path;
        if (name.size() >= sizeof m_address.sun_path) {
            m_folder = tryOpen(placeOf(path), O_PATH | O_DIRECTORY);
            if (!m_folder.isOpen())
                return;
            name = "/proc/self/fd/" + std::to_string(m_folder.number()) + "/" +
                   path.substr(path.rfind('/') + 1);
        }
        if (name.size() >= sizeof m_address.sun_path) {
            errno = ENAMETOOLONG;
            return;
        }
        m_address.sun_family = AF_UNIX;
        std::memcpy(m_address.sun_path, name.c_str(), name.size() + 1);
        m_size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size() + 1);
    }

    /// Calls `bind` or `connect`. Returns -1 on failure.
    template <class Call>
    int pass(const Call& call, const FileDescriptor& socket) const {
        // Without an address, `errno` still has the reason from the constructor.
        return m_size == 0
                   ? -1
                   : call(socket.number(), reinterpret_cast<const sockaddr*>(&m_address), m_size);
    }

private:
    FileDescriptor m_folder;
    sockaddr_un m_address{};
    socklen_t m_size = 0; ///< 0 without an address
};

FileDescriptor trySocket(int flags) {
    return FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
}

/// The folder of a socket, locked while the socket is made, so that two hosts don't mistake each
/// other's new socket for an abandoned one.
struct LockedFolder {
    FileDescriptor folder;
    HostLock lock;
};

/// Makes the folder if it is missing, and locks it. Another host holds the lock only briefly.
/// However, if this user has no private place for locks, the folder itself is locked (see
/// HostLock). Any program that may open the folder could hold that lock forever, so `patience`
/// limits the wait.
LockedFolder lockedFolder(const std::string& path, std::chrono::milliseconds patience) {
    using Clock = std::chrono::steady_clock;
    const std::string folder = placeOf(path);
    if (::mkdir(folder.c_str(), FOLDER_MODE) == 0) {
        // mkdir has removed the umask's bits from the mode.
        if (::chmod(folder.c_str(), FOLDER_MODE) != 0)
            failWith(folder, "can't set the mode of the folder", errno);
    } else if (errno != EEXIST) {
        failWith(folder, "can't make the folder", errno);
    }
    LockedFolder locked{openFile(folder, O_RDONLY | O_DIRECTORY, "can't open the folder"), {}};
    const Clock::time_point end = Clock::now() + patience;
    while (!locked.lock.tryTake(locked.folder)) {
        if (errno != EWOULDBLOCK)
            failWith(folder, "can't lock the folder", errno);
        if (Clock::now() >= end)
            throw Error(folder + ": another program keeps this folder locked (`lslocks` lists who; "
                                 "the lock is needed to make the socket in it)");
        std::this_thread::sleep_for(NEXT_TRY);
    }
    return locked;
}

/// Removes the socket of a program that has ended.
void removeAbandoned(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0)
        return;
    if (!S_ISSOCK(status.st_mode))
        throw Error(path + ": is not a socket (expected a socket or no file)");
    const FileDescriptor probe = trySocket(SOCK_NONBLOCK);
    if (!probe.isOpen())
        failWith(path, "can't create a socket", errno);
    if (Address(path).pass(::connect, probe) == 0 || errno == EAGAIN)
        throw Error(path + ": another program listens on this socket");
    if (errno != ECONNREFUSED)
        failWith(path, "can't tell whether a program listens on this socket", errno);
    if (::unlink(path.c_str()) != 0)
        failWith(path, "can't remove the socket of a program that has ended", errno);
}

/// Restores the mode bits that the umask has removed from the new socket, and examines the socket.
/// Changes no other file that somebody may have put in its place meanwhile.
bool tryOpenToGroup(const std::string& path, struct stat& status) {
    const FileDescriptor made = tryOpen(path, O_PATH | O_NOFOLLOW);
    if (!made.isOpen() || ::fstat(made.number(), &status) != 0)
        return false;
    if (!S_ISSOCK(status.st_mode) || status.st_uid != ::geteuid()) {
        errno = EEXIST;
        return false;
    }
    return ::chmod(("/proc/self/fd/" + std::to_string(made.number())).c_str(), SOCKET_MODE) == 0;
}

} // namespace

LocalListener::LocalListener(const std::string& path, std::chrono::milliseconds patience)
    : m_path(path), m_socket(trySocket(SOCK_NONBLOCK)) {
    constexpr char WHAT[] = "can't listen on this socket";
    if (!m_socket.isOpen())
        failWith(path, WHAT, errno);
    const LockedFolder folder = lockedFolder(path, patience);
    removeAbandoned(path);
    // bind gives the file the mode of the socket, less the umask, so the file is never open to
    // everybody.
    if (!trySetMode(m_socket, SOCKET_MODE) || Address(path).pass(::bind, m_socket) != 0)
        failWith(path, WHAT, errno);
    struct stat status {};
    if (!tryOpenToGroup(path, status) || ::listen(m_socket.number(), MOST_CLIENTS_WAITING) != 0) {
        const int error = errno;
        throw Error(path + ": " + WHAT + ": " + reasonOf(error) + discard(path));
    }
    m_device = status.st_dev;
    m_inode = status.st_ino;
}

LocalListener::~LocalListener() {
    // As long as the socket is open, no other file gets its inode.
    struct stat status {};
    if (::lstat(m_path.c_str(), &status) == 0 && status.st_dev == m_device &&
        status.st_ino == m_inode)
        static_cast<void>(::unlink(m_path.c_str()));
}

FileDescriptor LocalListener::tryAccept() const {
    int number;
    do
        number = ::accept4(m_socket.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    while (number < 0 && (errno == EINTR || errno == ECONNABORTED));
    return FileDescriptor(number);
}

FileDescriptor tryConnect(const std::string& path, std::chrono::milliseconds limit) {
    FileDescriptor socket = trySocket(0);
    timeval span{};
    span.tv_sec = static_cast<time_t>(limit.count() / 1000);
    span.tv_usec = static_cast<suseconds_t>(limit.count() % 1000 * 1000);
    if (!socket.isOpen() ||
        ::setsockopt(socket.number(), SOL_SOCKET, SO_SNDTIMEO, &span, sizeof span) != 0 ||
        Address(path).pass(::connect, socket) != 0 ||
        ::fcntl(socket.number(), F_SETFL, O_NONBLOCK) != 0)
        socket.close();
    return socket;
}

ssize_t trySend(const FileDescriptor& socket, const void* bytes, std::size_t size) {
    ssize_t sent;
    do
        sent = ::send(socket.number(), bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT);
    while (sent < 0 && errno == EINTR);
    return sent;
}

} // namespace board
