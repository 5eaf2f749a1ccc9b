#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

#include "base/FileDescriptor.h"

/// Locks (flock) that programs hold while they read or write a file, so that nobody reads it half
/// written. Anybody who may open a file can lock it, so every wait is bounded.
namespace board {

enum class LockKind {
    SHARED,   ///< to read; others may read too
    EXCLUSIVE ///< to write
};

/// How long to wait for a lock.
struct LockWait {
    std::chrono::milliseconds most{std::chrono::seconds(10)}; ///< 0: do not wait
    /// Called once if the wait lasts longer than a moment. The message tells which file is locked,
    /// which process holds the lock (if the system lists it), and how long the wait can last.
    std::function<void(const std::string& message)> onWait = [](const std::string&) {};
};

/// Waits for the lock on the file at a path. If the file is replaced meanwhile, the new file can be
/// locked with the same object, within the same time limit. `wait` must outlive the object. One
/// thread.
class LockWaiter {
public:
    LockWaiter(std::string path, const LockWait& wait);

    /// Locks the open file. Throws Error if the time limit expires, or if the program is asked to
    /// end (see isEndAsked). If the file can't be locked at all, as on some network file systems,
    /// throws Error for EXCLUSIVE, but returns for SHARED: reading must work without locks.
    void lock(const FileDescriptor& file, LockKind kind);

private:
    using Clock = std::chrono::steady_clock;

    bool mayWait(const FileDescriptor& file);

    const std::string m_path;
    const LockWait& m_wait;
    Clock::time_point m_start; ///< of the wait
    bool m_isWaiting = false, m_isTold = false;
};

/// Locks the open file SHARED without waiting. False only if a writing program holds the EXCLUSIVE
/// lock. True if the file can't be locked at all, because it can be read anyway.
bool tryLockShared(const FileDescriptor& file);

/// Opens a file or block device for reading and locks it SHARED, until the descriptor is closed. If
/// the file was replaced during the wait, opens the new one. Opening never waits. Throws Error if
/// the file can't be opened, if LockWaiter throws, and for anything that is not a file or block
/// device.
FileDescriptor openLocked(const std::string& path, const LockWait& wait);

/// The content of a file of at most `limit` bytes, read under a SHARED lock. A pipe or character
/// device is not locked, and reading it may wait. Throws Error if the file is larger or can't be
/// locked or read.
std::string readLocked(const std::string& path, std::size_t limit, const LockWait& wait);

} // namespace board
