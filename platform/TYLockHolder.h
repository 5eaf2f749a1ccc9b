#pragma once

#include "TYLock.h"

/// Takes a lock in its constructor and releases it in its destructor. The lock may be null, because
/// an object may have no lock.
class TYLockHolder {
public:
    explicit TYLockHolder(TYLock* lock) : m_lock(lock) {
        if (m_lock)
            m_lock->lock();
    }
    ~TYLockHolder() {
        if (m_lock)
            m_lock->unlock();
    }
    TYLockHolder(const TYLockHolder&) = delete;
    TYLockHolder& operator=(const TYLockHolder&) = delete;

private:
    TYLock* const m_lock;
};
