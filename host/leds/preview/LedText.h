#pragma once

#include <string>
#include <vector>

#include "leds/preview/LedPreview.h"

namespace board {

/// A preview as text: one row of marks per LED below a ruler in ticks and milliseconds, in sections
/// that fit on a terminal. Control characters in names and command lines become escapes.
class LedSections {
public:
    static constexpr unsigned TICKS = 60; ///< of each section except the last

    /// Uses everything in `waves` except what the LEDs show.
    explicit LedSections(const LedWaves& waves);

    /// The next section. `waves` holds what each LED shows in the section's ticks, in the form of
    /// LedWave::wave.
    std::string next(std::vector<std::string> waves);

private:
    const LedWaves m_waves;
    const std::size_t m_width; ///< of the column of names
    unsigned m_begin = 0;      ///< of the next section
    std::size_t m_line = 0;    ///< the first one that has not been shown
};

/// "tick 4, 400 ms:"
std::string tickText(const LedWaves& waves, unsigned tick);

/// One tick on one line: "tick 4, 400 ms: [#] power [ ] line".
std::string momentText(const LedWaves& waves, unsigned tick);

/// A line and when it is handled: "tick 4, 400 ms: line ring".
std::string lineText(const LedWaves& waves, const LedLine& line);

/// Whether an LED changes in `tick`. True for the first tick.
bool isChange(const LedWaves& waves, unsigned tick);

/// The waves with texts that a terminal and an XML parser can handle.
LedWaves printableWaves(LedWaves waves);

/// The time at which `tick` begins: "3.6 s".
std::string secondsText(const LedWaves& waves, unsigned tick);

/// Explains `segment`. The first line names the row, its light and its time, such as "line ring:
/// blinks for a time, from 3.6 s to 5.6 s". Further lines tell where the row is and what it hides.
std::string segmentText(const LedWaves& waves, const LedSegment& segment);

/// `text`, cut to `columns` columns if it is longer. The last column is then an ellipsis.
std::string cutTo(std::size_t columns, const std::string& text);

/// How many columns the longest name of an LED takes.
std::size_t longestName(const LedWaves& waves);

} // namespace board
