#pragma once

#include <atomic>
#include <fstream>
#include <iterator>
#include <string>

#include <sched.h>

namespace support {

/// How often a test repeats something that rarely goes wrong. Under sanitizers each round finds
/// more and takes longer.
constexpr int ROUNDS = BOARD_SANITIZED ? 1000 : 10000;

/// Yields until `tid` has been set and that thread of this process sleeps in the kernel or has
/// ended.
inline void waitUntilAsleep(const std::atomic<int>& tid) {
    for (;; ::sched_yield()) {
        if (tid == 0)
            continue;
        std::ifstream file("/proc/self/task/" + std::to_string(tid) + "/stat");
        const std::string stat(std::istreambuf_iterator<char>(file), {});
        const auto afterName = stat.rfind(") ");
        if (afterName == std::string::npos || stat[afterName + 2] == 'S')
            return;
    }
}

} // namespace support
