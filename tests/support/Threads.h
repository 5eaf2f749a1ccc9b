#pragma once

#include <atomic>
#include <thread>

#include <unistd.h>

#include "TYLock.h"
#include "support/Asleep.h"

namespace support {

/// How often a test repeats something that rarely goes wrong. Under sanitizers each round finds
/// more and takes longer; under emulation it only takes longer.
#ifdef __arm__
constexpr int ROUNDS = 1000;
#else
constexpr int ROUNDS = BOARD_SANITIZED ? 1000 : 10000;
#endif

/// Whether `operation`, run on another thread, waits while `lock` is held. Calls `meanwhile` during
/// the wait.
template <class Operation>
bool waitsFor(
    TYLock& lock, const Operation& operation, void (*meanwhile)() = [] {}) {
    std::atomic<int> waiting{0};
    std::atomic<bool> isDone{false};
    lock.lock();
    std::thread thread([&] {
        waiting = ::gettid();
        operation();
        isDone = true;
    });
    waitUntilAsleep(waiting);
    meanwhile();
    const bool hasWaited = !isDone;
    lock.unlock();
    thread.join();
    return hasWaited;
}

} // namespace support
