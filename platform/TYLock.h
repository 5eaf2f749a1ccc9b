#pragma once

/// What `getLock()` hands out: a lock that one thread may take several times and gives back as
/// often.
class TYLock {
public:
    virtual ~TYLock();
    virtual void lock() = 0;
    virtual void unlock() = 0;
};
