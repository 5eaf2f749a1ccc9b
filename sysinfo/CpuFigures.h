#pragma once

#include <cstdint>

/// The arithmetic of processor time, separate from the code that reads the counters.
namespace cpufigures {

/// The low 32 bits of the processor time since the system started, in jiffies.
struct Figures {
    std::uint32_t busy;
    std::uint32_t idle;
};

/// The number of samples that a `CpuLoad` keeps; the oldest is 14 periods back.
constexpr std::uint32_t SLOTS = 15;

/// The ring of samples of a `CpuLoad` and three positions in it. All members refer to data of the
/// `CpuLoad`.
struct Ring {
    std::uint32_t (&busy)[SLOTS];
    std::uint32_t (&idle)[SLOTS];
    std::uint32_t& current; ///< the slot of the latest sample
    std::uint32_t& index5;  ///< `measure` advances it to the slot of the sample 5 periods back
    std::uint32_t& index14; ///< the same for 14 periods
};

/// The outputs of one measurement, in percent.
struct Shares {
    unsigned short& last;
    unsigned short& mid;
    unsigned short& longest;
};

/// Parses a line that holds a name and at least four numbers: user, nice, system and idle time.
/// `busy` becomes the sum of the first three. The numbers are separated by any white space and may
/// have a sign and any length; only their low 32 bits count. Returns false and leaves `figures`
/// unchanged if the line has fewer numbers, or if `line` is null because no line could be read.
bool parse(const char* line, Figures& figures);

/// Sets `percent` to the busy share between two samples. The share is 0 to 100 if both counters ran
/// forward by less than about 21 million jiffies. If there is more busy time, 100 times that time
/// wraps to a signed 32-bit number, and the quotient is cut to 16 bits. Leaves `percent` unchanged
/// if no idle time passed, or if busy and idle time add up to 0 in 32 bits.
void setShare(const Figures& from, const Figures& to, unsigned short& percent);

/// Makes `line` the first sample of the ring. Returns false and changes nothing if the line can't
/// be parsed.
bool start(const Ring& ring, const char* line);

/// Advances the ring by one period, stores the times in `line` as the new sample and sets the
/// shares of the last 1, 5 and 14 periods. If the line can't be parsed, returns false; the ring has
/// then advanced, but the slot and the shares keep their old values.
bool measure(const Ring& ring, const char* line, const Shares& shares);

} // namespace cpufigures
