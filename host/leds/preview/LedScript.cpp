#include "leds/preview/LedScript.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <sstream>

#include "base/Error.h"
#include "base/Text.h"
#include "leds/LedLine.h"

namespace board {

namespace {

constexpr std::uint64_t US_PER_S = 1000000;
constexpr std::uint64_t US_PER_MS = 1000;

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() > end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// The decimal number in `text`, times `scale` and rounded up; empty if `text` is not a number.
std::optional<std::uint64_t> scaledNumber(const std::string& text, std::uint64_t scale) {
    constexpr std::size_t MOST_DIGITS = 9; // the result fits 64 bits
    const auto point = std::min(text.find('.'), text.size());
    const std::string whole = text.substr(0, point);
    std::string part = point < text.size() ? text.substr(point + 1) : "0";
    for (const std::string& digits : {whole, part})
        if (!isDigits(digits) || digits.size() > MOST_DIGITS)
            return std::nullopt;
    part.resize(MOST_DIGITS, '0');
    constexpr std::uint64_t PARTS = 1000000000;
    return std::stoull(whole) * scale + (std::stoull(part) * scale + PARTS - 1) / PARTS;
}

} // namespace

Result<TimedLedLine> parseTimedLine(const std::string& text) {
    constexpr char BETWEEN[] = " \t";
    const auto blank = text.find_first_of(BETWEEN);
    const auto begin = text.find_first_not_of(BETWEEN, blank);
    const std::string when = text.substr(0, blank);
    TimedLedLine timed{false, 0, ""};
    std::optional<std::uint64_t> number;
    if (endsWith(when, "ms"))
        number = scaledNumber(when.substr(0, when.size() - 2), US_PER_MS);
    else if (endsWith(when, "s"))
        number = scaledNumber(when.substr(0, when.size() - 1), US_PER_S);
    else if (timed.isTick = true; when.find('.') == std::string::npos)
        number = scaledNumber(when, 1);
    const bool isInRange = number && (!timed.isTick || (*number >= 1 && //
                                                        *number <= MOST_PREVIEW_TICKS));
    if (!isInRange || blank == std::string::npos || begin == std::string::npos)
        return Fault{"'" + text + "' (expected \"TICK LINE\" with a tick of 1 to " +
                     std::to_string(MOST_PREVIEW_TICKS) +
                     ", such as \"1 system ready\", or \"TIME LINE\", such as \"2.5s system "
                     "ready\")"};
    timed.when = *number;
    timed.line = text.substr(begin);
    if (timed.line.find('\n') != std::string::npos)
        return Fault{"'" + text + "' (expected one line; use one --at for each)"};
    if (timed.line.size() + 1 > MAX_LED_LINE)
        return Fault{"'" + text + "' (expected a line of at most " +
                     std::to_string(MAX_LED_LINE - 1) + " bytes: a board cuts longer ones in two)"};
    return timed;
}

std::vector<TimedLedLine> parseLedScript(const std::string& text, const std::string& name) {
    constexpr char BLANKS[] = " \t\r";
    std::vector<TimedLedLine> lines;
    std::istringstream source(text);
    std::string line;
    for (unsigned number = 1; std::getline(source, line); ++number) {
        const auto begin = line.find_first_not_of(BLANKS);
        if (begin == std::string::npos || line[begin] == '#')
            continue;
        line = line.substr(begin, line.find_last_not_of(BLANKS) + 1 - begin);
        const Result<TimedLedLine> timed = parseTimedLine(line);
        if (!timed)
            throw Error(name + ":" + std::to_string(number) + ": " + printable(timed.fault()));
        lines.push_back(*timed);
    }
    return lines;
}

LedLine atTick(const TimedLedLine& line, std::uint32_t tickMs) {
    const std::uint64_t tickUs = tickMs * US_PER_MS;
    const std::uint64_t tick = line.isTick ? line.when : (line.when + tickUs - 1) / tickUs;
    return {static_cast<unsigned>(std::clamp<std::uint64_t>(tick, 1, UINT32_MAX)), line.line};
}

} // namespace board
