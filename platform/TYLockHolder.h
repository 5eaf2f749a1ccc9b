#pragma once

#include "TYLock.h"

/// Holds a lock while it lives. Does nothing for null, because an object may have no lock.
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
