#include "CpuFigures.h"

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

// By hand: the standard functions clamp a number that is too long, each word size at another place.
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
    // By -1 the lowest number has no quotient; negated without a division it wraps to itself.
    const std::uint32_t share =
        total == -1 ? 0U - scaled
                    : static_cast<std::uint32_t>(static_cast<std::int32_t>(scaled) / total);
    percent = static_cast<unsigned short>(share);
}

} // namespace cpufigures
