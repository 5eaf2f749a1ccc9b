#pragma once

/// What `getLock()` returns: a recursive lock. A thread that takes it several times must release it
/// as often.
class TYLock {
public:
    virtual ~TYLock();
    virtual void lock() = 0;
    virtual void unlock() = 0;
};
