#pragma once

#include "base/FileDescriptor.h"

namespace board {

/// A lock between the hosts of one user on something that only one of them may use, such as an LED
/// or a pipe.
///
/// A lock on the file itself would not be safe: every user who may open the file could hold it. So
/// what is locked is a byte of another file, which only this user may open. That file is in the
/// first of these folders that belongs to the user: /run, /run/boarddrivers, /run/user/UID and
/// $XDG_RUNTIME_DIR. If none does, the file itself is locked.
class HostLock {
public:
    /// Locks the file behind `file` until this object is destroyed. `file` must stay open
    /// meanwhile. Returns false on failure: `errno` is EWOULDBLOCK if another host has the lock.
    bool tryTake(const FileDescriptor& file);

private:
    FileDescriptor m_locks;
};

} // namespace board
