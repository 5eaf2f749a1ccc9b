#pragma once

#include <cstdint>

#include "XCode.h"

/// A point or a span of time: unsigned 32-bit seconds and nanoseconds (0 to 999,999,999).
class TYTime {
public:
    static constexpr unsigned SYSTEM_CLOCK = 1;    ///< calendar time; jumps when the clock is set
    static constexpr unsigned MONOTONIC_CLOCK = 2; ///< time since start-up; never jumps

    TYTime() = default;
    TYTime(std::uint32_t secs, std::uint32_t nanosecs) : seconds(secs), nanoseconds(nanosecs) {}

    /// Reads the clock `source` into this object. Fails and changes nothing if `source` is unknown.
    XCode getSystemClock(unsigned source);

    /// The span between two points in time; its seconds wrap in 32 bits.
    friend TYTime operator-(const TYTime& later, const TYTime& earlier);
    friend bool operator==(const TYTime& a, const TYTime& b) {
        return a.seconds == b.seconds && a.nanoseconds == b.nanoseconds;
    }
    friend bool operator!=(const TYTime& a, const TYTime& b) { return !(a == b); }

    std::uint32_t seconds = 0;
    std::uint32_t nanoseconds = 0;
};
