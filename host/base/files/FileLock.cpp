#include "base/files/FileLock.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <sstream>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include "base/EndingSignals.h"
#include "base/Error.h"
#include "base/File.h"

namespace board {

namespace {

using std::chrono::milliseconds;

bool tryLock(const FileDescriptor& file, LockKind kind) {
    return ::flock(file.number(), (kind == LockKind::SHARED ? LOCK_SH : LOCK_EX) | LOCK_NB) == 0;
}

/// "process 123", or "another program" if the system does not tell which. A line of the system's
/// table is "1: FLOCK  ADVISORY  WRITE 123 08:01:4567 0 EOF".
std::string holderOf(const FileDescriptor& file) {
    constexpr std::size_t MOST = std::size_t{1} << 20U;
    struct stat status {};
    const FileDescriptor table = tryOpen("/proc/locks", O_RDONLY);
    if (!table.isOpen() || ::fstat(file.number(), &status) != 0)
        return "another program";
    char place[64];
    std::snprintf(place, sizeof place, "%02x:%02x:%llu", ::major(status.st_dev),
                  ::minor(status.st_dev), static_cast<unsigned long long>(status.st_ino));
    std::istringstream lines;
    try {
        lines.str(readUpTo(table, MOST, "/proc/locks"));
    } catch (const Error&) {
        return "another program"; // naming the holder is only a help to the user
    }
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string number, type, manner, access, process, where;
        if (words >> number >> type >> manner >> access >> process >> where && type == "FLOCK" &&
            where == place && process.find_first_not_of("0123456789") == std::string::npos &&
            process != "0")
            return "process " + process;
    }
    return "another program";
}

std::string secondsOf(milliseconds span) {
    std::ostringstream text;
    text << static_cast<double>(span.count()) / 1000 << " s";
    return text.str();
}

/// Waits for `span`, or until a signal that the program handles.
void pauseFor(milliseconds span) {
    static_cast<void>(::poll(nullptr, 0, static_cast<int>(span.count())));
}

} // namespace

LockWaiter::LockWaiter(std::string path, const LockWait& wait)
    : m_path(std::move(path)), m_wait(wait) {}

void LockWaiter::lock(const FileDescriptor& file, LockKind kind) {
    // flock waits forever or not at all, so this tries again and again.
    constexpr milliseconds LONGEST_PAUSE{50};
    milliseconds pause{1};
    while (!tryLock(file, kind)) {
        if (errno != EWOULDBLOCK && errno != EINTR && kind == LockKind::SHARED)
            return;
        if (errno != EWOULDBLOCK)
            failWith(m_path, "can't lock", errno);
        if (!mayWait(file))
            throw Error(
                m_path + ": is locked by " + holderOf(file) +
                (m_wait.most.count() > 0 ? "; gave up after " + secondsOf(m_wait.most) : ""));
        if (isEndAsked())
            failWith(m_path, "can't lock", EINTR);
        pauseFor(pause);
        pause = std::min(2 * pause, LONGEST_PAUSE);
    }
}

bool LockWaiter::mayWait(const FileDescriptor& file) {
    constexpr milliseconds NOT_WORTH_A_MESSAGE{100};
    const Clock::time_point now = Clock::now();
    if (!std::exchange(m_isWaiting, true))
        m_start = now;
    if (now - m_start >= m_wait.most)
        return false;
    if (now - m_start >= NOT_WORTH_A_MESSAGE && !std::exchange(m_isTold, true))
        m_wait.onWait(m_path + ": is locked by " + holderOf(file) + "; waiting up to " +
                      secondsOf(m_wait.most));
    return true;
}

bool tryLockShared(const FileDescriptor& file) {
    return tryLock(file, LockKind::SHARED) || errno != EWOULDBLOCK;
}

FileDescriptor openLocked(const std::string& path, const LockWait& wait) {
    for (LockWaiter waiter(path, wait);;) {
        FileDescriptor file = openFile(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
        const FileKind kind = kindOf(file);
        if (kind != FileKind::REGULAR && kind != FileKind::BLOCK_DEVICE)
            throw Error(path + ": is not a device file (expected a file or a block device)");
        waiter.lock(file, LockKind::SHARED);
        const auto locked = tryIdentify(file), named = tryIdentify(path);
        if (!locked || !named || *locked == *named) // a file that was removed can still be read
            return file;
        if (isEndAsked()) // others may replace the file again and again
            failWith(path, "can't lock", EINTR);
    }
}

std::string readLocked(const std::string& path, std::size_t limit, const LockWait& wait) {
    const FileKind kind = kindOf(path);
    if (kind != FileKind::REGULAR && kind != FileKind::BLOCK_DEVICE)
        return readFile(path, limit);
    std::string content = readUpTo(openLocked(path, wait), limit, path);
    if (content.size() > limit)
        failTooLarge(path, limit);
    return content;
}

} // namespace board
