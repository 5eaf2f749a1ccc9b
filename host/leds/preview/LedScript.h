#pragma once

#include <string>
#include <vector>

#include "base/Result.h"
#include "leds/preview/LedPreview.h"

namespace board {

/// The most ticks that a preview may have, and the last tick that a line may name.
constexpr unsigned MOST_PREVIEW_TICKS = 1000000;

/// A line, and when the sequencer is to handle it.
struct TimedLedLine {
    bool isTick;        ///< true if `when` is a tick, false if it is a time
    std::uint64_t when; ///< a tick, 1 or more, or microseconds
    std::string line;
};

/// Reads "TICK LINE", such as "12 system ready", or "TIME LINE", such as "2.5s system ready" or
/// "300ms system ready". A fault quotes the text.
Result<TimedLedLine> parseTimedLine(const std::string& text);

/// Reads a script: lines for parseTimedLine in any order, empty lines, and comments, which begin
/// with "#". `name` is for messages. Throws Error: "NAME:LINE: what is wrong (expected ...)".
std::vector<TimedLedLine> parseLedScript(const std::string& text, const std::string& name);

/// The line with its tick. A time is rounded up to a tick, but at least to tick 1, because no line
/// can change tick 0. `tickMs` must not be 0.
LedLine atTick(const TimedLedLine& line, std::uint32_t tickMs);

} // namespace board
