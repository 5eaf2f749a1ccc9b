#include "CpuFigures.h"

#include <initializer_list>

namespace cpufigures {

namespace {

bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

const char* skipBlanks(const char* text) {
    while (isBlank(*text))
        ++text;
    return text;
}

const char* skipName(const char* text) {
    text = skipBlanks(text);
    while (*text != '\0' && !isBlank(*text))
        ++text;
    return text;
}

// Does not use the standard functions, because they clamp a number that is too large, at a limit
// that depends on the word size. Here the number must wrap.
bool readNumber(const char*& text, std::uint32_t& number) {
    text = skipBlanks(text);
    const bool negative = *text == '-';
    if (negative || *text == '+')
        ++text;
    if (!isDigit(*text))
        return false;
    std::uint32_t magnitude = 0;
    for (; isDigit(*text); ++text)
        magnitude = magnitude * 10U + static_cast<std::uint32_t>(*text - '0');
    number = negative ? 0U - magnitude : magnitude;
    return true;
}

} // namespace

bool parse(const char* line, Figures& figures) {
    if (!line)
        return false;
    line = skipName(line);
    std::uint32_t user = 0;
    std::uint32_t nice = 0;
    std::uint32_t system = 0;
    std::uint32_t idle = 0;
    if (!readNumber(line, user) || !readNumber(line, nice) || !readNumber(line, system) ||
        !readNumber(line, idle))
        return false;
    figures = {user + nice + system, idle};
    return true;
}

void setShare(const Figures& from, const Figures& to, unsigned short& percent) {
    const std::uint32_t idle = to.idle - from.idle;
    const std::uint32_t busy = to.busy - from.busy;
    const std::uint32_t scaled = 100U * busy;
    const auto total = static_cast<std::int32_t>(idle + busy);
    if (idle == 0 || total == 0)
        return;
    // A signed division of the lowest number by -1 overflows, which is undefined. So for -1,
    // `scaled` is subtracted from 0 as an unsigned number, which wraps instead.
    const std::uint32_t share =
        total == -1 ? 0U - scaled
                    : static_cast<std::uint32_t>(static_cast<std::int32_t>(scaled) / total);
    percent = static_cast<unsigned short>(share);
}

bool start(const Ring& ring, const char* line) {
    Figures figures{};
    if (!parse(line, figures))
        return false;
    ring.current = 0;
    ring.busy[0] = figures.busy;
    ring.idle[0] = figures.idle;
    // `measure` advances both indexes before it uses them. They are then 5 and 14 slots behind the
    // new sample.
    ring.index5 = 10;
    ring.index14 = 1;
    return true;
}

bool measure(const Ring& ring, const char* line, const Shares& shares) {
    const std::uint32_t previous = ring.current;
    for (std::uint32_t* const index : {&ring.current, &ring.index5, &ring.index14})
        *index = (*index + 1) % SLOTS;
    Figures figures{};
    if (!parse(line, figures))
        return false;
    ring.busy[ring.current] = figures.busy;
    ring.idle[ring.current] = figures.idle;
    const auto setShareSince = [&](std::uint32_t slot, unsigned short& percent) {
        setShare({ring.busy[slot], ring.idle[slot]}, figures, percent);
    };
    setShareSince(previous, shares.last);
    setShareSince(ring.index5, shares.mid);
    setShareSince(ring.index14, shares.longest);
    return true;
}

} // namespace cpufigures
