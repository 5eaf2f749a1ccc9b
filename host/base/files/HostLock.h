#pragma once

#include "base/FileDescriptor.h"

namespace board {

/// A lock between the hosts of one user on something that only one of them may use, such as an LED
/// or a pipe.
///
/// A lock on the file itself would not do: every user who may open the file could hold it. This
/// lock is a byte of a file that only this user may open, in a folder of this user: /run,
/// /run/boarddrivers, /run/user/UID or $XDG_RUNTIME_DIR, whichever is the first that belongs to the
/// user. If none does, it is a lock on the file itself.
class HostLock {
public:
    /// Locks the file behind `file` until this object is destroyed. `file` must stay open
    /// meanwhile. Returns false on failure: `errno` is EWOULDBLOCK if another host has the lock.
    bool tryTake(const FileDescriptor& file);

private:
    FileDescriptor m_locks;
};

} // namespace board
