#pragma once

#include <cstdint>

/// The arithmetic of processor time, apart from where the figures come from.
namespace cpufigures {

/// Processor time since the system's start, in units of jiffies, the low 32 bits.
struct Figures {
    std::uint32_t busy;
    std::uint32_t idle;
};

/// Reads a line of a name and at least four numbers: user, nice, system (busy in sum) and idle
/// time. Numbers may have any length and a sign; their low 32 bits count. Blanks of any kind stand
/// between. False, with `figures` left alone, where there are fewer; null is a line that could not
/// be read.
bool parse(const char* line, Figures& figures);

/// Sets `percent` to the busy share between two samples, 0 to 100 where both counters ran forwards
/// by less than some 21 million jiffies; beyond that the product by 100 wraps as it does in 32-bit
/// arithmetic with a sign, and of the quotient 16 bits are kept. Left alone where no idle time
/// passed or the sum is 0.
void setShare(const Figures& from, const Figures& to, unsigned short& percent);

} // namespace cpufigures
