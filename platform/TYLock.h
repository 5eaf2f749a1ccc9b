#pragma once

#include <mutex>

/// What `getLock()` hands out: a lock that one thread may take several times and gives back as often.
class TYLock {
public:
    virtual ~TYLock();
    virtual void lock() = 0;
    virtual void unlock() = 0;
};

/// The framework's recursive lock.
class TYRecursiveLock : public TYLock {
public:
    void lock() override;
    void unlock() override;

private:
    std::recursive_mutex m_mutex;
};

/// Holds a lock for its own life. Over null it does nothing, since an object may have no lock.
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
