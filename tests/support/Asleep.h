#pragma once

#include <atomic>
#include <fstream>
#include <iterator>
#include <string>

#include <sched.h>

namespace support {

/// Yields until `tid` has been set and that thread or program waits (not for a disk) or has ended.
inline void waitUntilAsleep(const std::atomic<int>& tid) {
    for (;; ::sched_yield()) {
        if (tid == 0)
            continue;
        std::ifstream file("/proc/" + std::to_string(tid) + "/stat");
        const std::string stat(std::istreambuf_iterator<char>(file), {});
        const auto afterName = stat.rfind(") ");
        const char state = afterName == std::string::npos ? 'X' : stat[afterName + 2];
        if (state != 'R' && state != 'D')
            return;
    }
}

} // namespace support
