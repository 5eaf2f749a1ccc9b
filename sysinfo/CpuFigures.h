#pragma once

#include <cstdint>

/// The arithmetic of processor time, separate from reading the figures.
namespace cpufigures {

/// Processor time since the system started, in jiffies; the low 32 bits.
struct Figures {
    std::uint32_t busy;
    std::uint32_t idle;
};

/// The number of samples that a meter keeps; the oldest is 14 periods back.
constexpr std::uint32_t SLOTS = 15;

/// A meter's ring of samples and its positions in it. The meter owns all of it.
struct Ring {
    std::uint32_t (&busy)[SLOTS];
    std::uint32_t (&idle)[SLOTS];
    std::uint32_t& current; ///< the slot of the latest sample
    std::uint32_t& index5;  ///< the slot that `measure` compares with for 5 periods, once advanced
    std::uint32_t& index14; ///< the same for 14 periods
};

/// The outputs of one measurement, in percent.
struct Shares {
    unsigned short& last;
    unsigned short& mid;
    unsigned short& longest;
};

/// Parses a line of a name and at least four numbers: user, nice, system (busy in sum) and idle
/// time. Numbers may have any length and a sign; their low 32 bits count. White space of any kind
/// separates them. Returns false and leaves `figures` alone if there are fewer, or if `line` is
/// null, which means that no line could be read.
bool parse(const char* line, Figures& figures);

/// Sets `percent` to the busy share between two samples. The share is 0 to 100 if both counters ran
/// forward by less than about 21 million jiffies; beyond that the product by 100 wraps as signed
/// 32-bit arithmetic does, and the quotient is cut to 16 bits. Leaves `percent` alone if no idle
/// time passed or the sum of both is 0.
void setShare(const Figures& from, const Figures& to, unsigned short& percent);

/// Makes `line` the first sample of the ring. Returns false and changes nothing if it can't be
/// parsed.
bool start(const Ring& ring, const char* line);

/// Advances the ring by one period, stores `line` as its sample and sets the shares of the last 1,
/// 5 and 14 periods. If the line can't be parsed, it returns false: the ring has advanced, and both
/// the slot and the shares keep their values.
bool measure(const Ring& ring, const char* line, const Shares& shares);

} // namespace cpufigures
