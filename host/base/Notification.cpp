#include "base/Notification.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "base/Error.h"
#include "base/File.h"

namespace board {

// Written by hand because the init system's own library would have to be cross-built just for this.
void notifyInitSystem(const std::string& state) {
    const char* const path = std::getenv("NOTIFY_SOCKET");
    if (!path || !*path)
        return;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::size_t length = std::strlen(path);
    if (length >= sizeof address.sun_path)
        throw Error(std::string("NOTIFY_SOCKET: the path is too long: ") + path);
    std::memcpy(address.sun_path, path, length);
    if (address.sun_path[0] == '@') // an abstract address, which is not a file
        address.sun_path[0] = '\0';
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length);
    const bool sent =
        socket.isOpen() && ::sendto(socket.number(), state.data(), state.size(), MSG_NOSIGNAL,
                                    reinterpret_cast<const sockaddr*>(&address), size) >= 0;
    if (!sent)
        throw Error(std::string("NOTIFY_SOCKET: ") + path + ": " + reasonOf(errno));
}

std::optional<std::string> InitSystem::tell(const std::string& state) {
    constexpr char READY[] = "READY=1";
    try {
        notifyInitSystem(m_unsaid + state);
        m_unsaid.clear();
        m_wasHeard = true;
    } catch (const Error& error) {
        if (state == READY)
            m_unsaid = state + "\n";
        if (std::exchange(m_wasHeard, false))
            return error.what();
    }
    return std::nullopt;
}

std::optional<std::chrono::microseconds> watchdogPeriod() {
    const char* const period = std::getenv("WATCHDOG_USEC");
    const char* const process = std::getenv("WATCHDOG_PID");
    if (!period || (process && std::to_string(::getpid()) != process))
        return std::nullopt;
    const long long microseconds = std::atoll(period);
    if (microseconds <= 0)
        return std::nullopt;
    constexpr long long LEAST = 2000, MOST = 86'400'000'000; // callers halve it and add it to now
    return std::chrono::microseconds(std::clamp(microseconds, LEAST, MOST));
}

bool isJournal(int descriptor) {
    const char* const named = std::getenv("JOURNAL_STREAM");
    struct stat status {};
    return named && ::fstat(descriptor, &status) == 0 &&
           std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino) == named;
}

} // namespace board
