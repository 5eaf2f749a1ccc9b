#pragma once

/// The recursive lock that `getLock()` returns. A thread must release the lock as many times as it
/// took the lock.
class TYLock {
public:
    virtual ~TYLock();
    virtual void lock() = 0;
    virtual void unlock() = 0;
};
