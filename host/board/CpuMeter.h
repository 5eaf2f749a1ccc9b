#pragma once

#include <optional>

#include "CpuLoad.h"
#include "base/Result.h"

namespace board {

/// How busy the processors were, in percent.
struct CpuReading {
    unsigned last = 0;               ///< over the last period
    std::optional<unsigned> mid;     ///< over 5 periods, once that many have passed
    std::optional<unsigned> longest; ///< over 14 periods, once that many have passed
};

/// The load since the system started, in percent. Takes one sample, so it does not wait.
Result<unsigned> cpuLoadSinceBoot();

/// Measures the load of the processors period by period.
class CpuMeter {
public:
    /// Takes the first sample.
    CpuMeter();

    /// The load since the last call, or since construction. If the idle time did not advance in
    /// that period, the library's meter leaves its result unchanged. The load was then 100 percent
    /// if the busy time advanced. If it did not, no time has passed, and the previous result
    /// remains.
    Result<CpuReading> next();

private:
    Fault restart();

    CpuLoad m_load;
    bool m_isSetUp;
    unsigned long m_busy = 0; ///< the counter of busy time at the last sample
    unsigned m_periods = 0;
    unsigned short m_last = 0, m_mid = 0, m_longest = 0; ///< the previous results
};

} // namespace board
