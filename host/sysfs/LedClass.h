#pragma once

#include <string>
#include <vector>

#include "base/Result.h"

namespace board {

/// An LED of the kernel.
struct LedEntry {
    std::string name;
    std::string folder; ///< where its files are
    Result<long long> brightness;
    Result<long long> maximum;
    /// What drives the LED, such as "timer" or "none"; empty if the kernel has no triggers.
    Result<std::string> trigger;
};

std::vector<LedEntry> ledsOf(const std::string& sysfs);

} // namespace board
