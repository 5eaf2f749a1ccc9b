#pragma once

#include <optional>
#include <string>

#include "CpuLoad.h"

namespace board {

/// How busy the processors were, in percent; nothing where it is not known.
struct CpuReading {
    std::optional<unsigned> last;    ///< over the last period
    std::optional<unsigned> mid;     ///< over 5 periods, once there were as many
    std::optional<unsigned> longest; ///< over 14 periods, once there were as many
    std::string fault;               ///< why nothing is known; empty where something is
};

/// Measures the processors' load period by period.
class CpuMeter {
public:
    /// Takes the first sample.
    CpuMeter();

    /// What the load was since the last call, or since the object was made. A span without idle
    /// time, which the library's meter leaves open, was fully busy where the counter of busy time
    /// has moved; where it has not either, no time has passed and the former figure stays.
    CpuReading next();

private:
    CpuLoad m_load;
    bool m_isSetUp;
    unsigned long m_busy = 0; ///< as it was when last looked at
    unsigned m_periods = 0;
    unsigned short m_last = 0, m_mid = 0, m_longest = 0; ///< the former figures
};

} // namespace board
