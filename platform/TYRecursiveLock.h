#pragma once

#include <mutex>

#include "TYLock.h"

/// The framework's recursive lock.
class TYRecursiveLock : public TYLock {
public:
    void lock() override;
    void unlock() override;

private:
    std::recursive_mutex m_mutex;
};
