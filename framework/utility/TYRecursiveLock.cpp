#include "TYRecursiveLock.h"

TYLock::~TYLock() = default;

void TYRecursiveLock::lock() {
    m_mutex.lock();
}

void TYRecursiveLock::unlock() {
    m_mutex.unlock();
}
