#pragma once

#include <cstdint>

#include "BOARD_API.h"
#include "String.h"
#include "XCode.h"

/// How busy the processors are, in percent, over the last period and the last 5 and 14 periods.
///
/// A period is the time between two calls of `measure`; the host calls it at a pace of its own.
/// Figures come from the kernel's counters of processor time, in units of jiffies since the
/// system's start, all processors together; their low 32 bits are kept, so that they wrap alike on
/// every machine. A status that fails has the code -1 and no text. Not locked: one caller at a
/// time. The order of the members is part of the binary face.
class BOARD_API CpuLoad {
public:
    /// Where the kernel shows its counters. The first line counts: a name, then user, nice, system
    /// and idle time, then others that are not looked at.
    static constexpr char USAGE_FILE[] = "/proc/stat";

    CpuLoad();

    /// Reads the counters: `busy` gets user, nice and system time, `idle` the idle time, both 0 to
    /// 4294967295 and wrapping. Waiting for devices and serving interrupts count for neither.
    /// Fails, with both left alone, when the file can't be opened or its line has fewer than four
    /// numbers.
    XCode getCurrentLoad(unsigned long& busy, unsigned long& idle);

    /// Takes the first sample, against which the first `measure` compares. Called once, before it;
    /// without it `last` begins with the load since the system's start, and `mid` and `longest` are
    /// never set. Fails as `getCurrentLoad` does and then changes nothing.
    XCode setup();

    /// Takes a sample and sets each output to the busy share of its span, 0 to 100: `last` of one
    /// period, `mid` of 5, `longest` of 14. Until that many periods have passed, `mid` and
    /// `longest` are of the time since `setup` or since the system's start, as the ring's slots
    /// still hold 0.
    ///
    /// An output whose span has no idle time is left alone, even if the processors were busy all
    /// the time: give the variables their start value. A span of more than some 21 million jiffies
    /// of busy time, or a counter that ran backwards as some kernels' idle time does, gives a
    /// figure without meaning, also above 100. Fails as `getCurrentLoad` does, with the outputs
    /// left alone; the period is counted all the same, and its slot in the ring keeps the sample of
    /// 15 periods ago.
    XCode measure(unsigned short& last, unsigned short& mid, unsigned short& longest);

private:
    static constexpr std::uint32_t SLOTS = 15;

    std::uint32_t m_busy[SLOTS];
    std::uint32_t m_idle[SLOTS];
    std::uint32_t m_current;
    std::uint32_t m_index5;
    std::uint32_t m_index14;
};
