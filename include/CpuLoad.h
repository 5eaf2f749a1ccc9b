#pragma once

#include <cstdint>

#include "BOARD_API.h"
#include "String.h"
#include "XCode.h"

/// How busy the processors are, in percent, over the last period and the last 5 and 14 periods.
///
/// A period is the time between two calls of `measure`; the host chooses its length. The figures
/// come from the kernel's counters of processor time: jiffies since the system started, for all
/// processors together. Only the low 32 bits of a counter are kept, so a counter wraps at the same
/// value on every machine. A failure has code -1 and no text. No operation takes a lock, so only
/// one thread at a time may use an object. The order of the members is part of the binary
/// interface.
class BOARD_API CpuLoad {
public:
    /// The file with the kernel's counters. Only the first line is read. It holds a name, then the
    /// user, nice, system and idle times, then other times, which are ignored.
    static constexpr char USAGE_FILE[] = "/proc/stat";

    CpuLoad();

    /// Reads the counters, in jiffies: `busy` is the sum of user, nice and system time, `idle` is
    /// the idle time. Both range from 0 to 4294967295 and wrap. Neither includes time spent waiting
    /// for devices or serving interrupts. Fails and leaves both outputs unchanged if the file can't
    /// be opened or its line has fewer than four numbers.
    XCode getCurrentLoad(unsigned long& busy, unsigned long& idle);

    /// Takes the first sample; the first `measure` compares its own sample with this one. Call
    /// `setup` once, before `measure`. Without that call, the first `last` is the load since the
    /// system started, and `measure` never sets `mid` and `longest`. Fails as `getCurrentLoad` does
    /// and then changes nothing.
    XCode setup();

    /// Takes a sample and sets each output to the busy share of its span, 0 to 100 percent: `last`
    /// for one period, `mid` for 5 periods, `longest` for 14. Before 5 periods have passed, `mid`
    /// covers the time since the system started, because missing samples count as 0. The same
    /// applies to `longest` before 14 periods have passed.
    ///
    /// An output is left unchanged if its span has no idle time, so initialize the variables. For
    /// the same reason, processors that were busy all the time do not yield 100. A figure is
    /// meaningless, and may exceed 100, if its span has more than about 21 million jiffies of busy
    /// time or if a counter ran backwards, as idle time does on some kernels. Fails as
    /// `getCurrentLoad` does and leaves the outputs unchanged. The failed period still counts: the
    /// sample of 15 periods ago is used as the sample of that period.
    XCode measure(unsigned short& last, unsigned short& mid, unsigned short& longest);

private:
    static constexpr std::uint32_t SLOTS = 15;

    std::uint32_t m_busy[SLOTS];
    std::uint32_t m_idle[SLOTS];
    std::uint32_t m_current;
    std::uint32_t m_index5;
    std::uint32_t m_index14;
};
