#pragma once

#include <cstdint>

#include "BOARD_API.h"
#include "String.h"
#include "XCode.h"

/// How busy the processors are, in percent, over the last period and the last 5 and 14 periods.
///
/// A period is the time between two calls of `measure`; the host chooses how long that is. The
/// figures come from the kernel's counters of processor time: jiffies since the system started, for
/// all processors together. Only the low 32 bits of a counter are kept, so it wraps the same way on
/// every machine. A failure has code -1 and no text. No operation takes a lock, so only one thread
/// at a time may use an object. The order of the members is part of the binary interface.
class BOARD_API CpuLoad {
public:
    /// The file with the kernel's counters. Only the first line is read: a name, then user, nice,
    /// system and idle time, then others that are ignored.
    static constexpr char USAGE_FILE[] = "/proc/stat";

    CpuLoad();

    /// Reads the counters: `busy` is the sum of user, nice and system time, `idle` the idle time.
    /// Both are 0 to 4294967295 and wrap. Time spent waiting for devices or serving interrupts
    /// counts for neither. Fails and leaves both unchanged if the file can't be opened or its line
    /// has fewer than four numbers.
    XCode getCurrentLoad(unsigned long& busy, unsigned long& idle);

    /// Takes the first sample; the first `measure` compares its own sample with this one. Call it
    /// once, before `measure`. Otherwise, the first `last` is the load since the system started,
    /// and `mid` and `longest` are never set. Fails as `getCurrentLoad` does and then changes
    /// nothing.
    XCode setup();

    /// Takes a sample and sets each output to the busy share of its span, 0 to 100: `last` for one
    /// period, `mid` for 5, `longest` for 14. Until 5 or 14 periods have passed, `mid` and
    /// `longest` cover the time since the system started, because missing samples count as 0.
    ///
    /// An output is left unchanged if its span has no idle time, so initialize the variables:
    /// processors that were busy all the time do not yield 100. A figure is meaningless, and may
    /// exceed 100, if its span has more than about 21 million jiffies of busy time or if a counter
    /// ran backwards, as idle time does on some kernels. Fails as `getCurrentLoad` does and leaves
    /// the outputs unchanged. The failed period still counts, with the sample of 15 periods ago in
    /// place of its own.
    XCode measure(unsigned short& last, unsigned short& mid, unsigned short& longest);

private:
    static constexpr std::uint32_t SLOTS = 15;

    std::uint32_t m_busy[SLOTS];
    std::uint32_t m_idle[SLOTS];
    std::uint32_t m_current;
    std::uint32_t m_index5;
    std::uint32_t m_index14;
};
