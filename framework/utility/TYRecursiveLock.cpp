#include "TYRecursiveLock.h"

void TYRecursiveLock::lock() {
    m_mutex.lock();
}

void TYRecursiveLock::unlock() {
    m_mutex.unlock();
}
