#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "profile/Profile.h"

namespace board {

/// A command line of a preview, handed to the sequencer just before the output of a tick.
struct LedLine {
    unsigned tick; ///< 1 or more: the default rows run before tick 0
    std::string line;
    /// Set by the preview: the index of the row that the line names; empty if it names none.
    std::optional<std::size_t> row = {};
};

/// How a row lights an LED.
enum class LedLight : std::uint8_t {
    NONE,   ///< not at all: the row has ended what the LED showed
    STEADY, ///< lit all the time
    BLINK,  ///< follows the blink pattern
    FLASH,  ///< lit for one tick
    ROLL,   ///< lit when its turn comes
};

/// What drives an LED: a row, and how.
struct LedDrive {
    std::size_t row = 0; ///< index in the table
    LedLight light = LedLight::NONE;
    bool isTimed = false; ///< ends by itself, and the LED shows again what it showed before

    friend bool operator==(const LedDrive& a, const LedDrive& b) {
        return a.row == b.row && a.light == b.light && a.isTimed == b.isTimed;
    }
};

/// A span of ticks in which one run of a row holds an LED, but another run drives it.
struct LedCover {
    unsigned begin, end; ///< ticks; `end` is the first tick after the span
    LedDrive drive;
};

/// A span of ticks in which one run of a row drives an LED.
struct LedSegment {
    unsigned begin, end; ///< ticks; `end` is the first tick after the span
    LedDrive drive;
    /// What else held the LED within these ticks. If covers overlap, each is also hidden by those
    /// before it in the list.
    std::vector<LedCover> covers;
};

/// What one LED shows: character k is '1' if it is lit in tick k, else '0'.
struct LedWave {
    std::uint32_t mask;
    std::string name;
    std::string wave;
    LedColor color = LedColor::UNKNOWN;
    /// In order, without overlaps. In a tick without a segment, no row has driven the LED yet.
    std::vector<LedSegment> segments = {};
};

/// What the LEDs of a board would show.
struct LedWaves {
    unsigned ticks;
    std::uint32_t tickMs;
    std::vector<LedWave> leds;                           ///< in ascending order of their masks
    std::vector<LedLine> lines;                          ///< in order of their ticks
    std::vector<LedSequencerProfile::Command> rows = {}; ///< the table
};

/// Runs the real sequencer with the tables of `profile` for `ticks` ticks, without waiting and
/// without its pipe and files. Throws Error for a tick period that the sequencer rejects.
///
/// The result holds a character for each LED and tick. For long previews, LedPreviewRun needs less
/// memory, because it keeps no output.
LedWaves previewLeds(const LedSequencerProfile& profile, unsigned ticks,
                     std::vector<LedLine> lines);

struct LedSequence;

/// Runs a preview as previewLeds does, but tick by tick.
class LedPreviewRun {
public:
    LedPreviewRun(const LedSequencerProfile& profile, unsigned ticks, std::vector<LedLine> lines);
    ~LedPreviewRun();
    LedPreviewRun(const LedPreviewRun&) = delete;
    LedPreviewRun& operator=(const LedPreviewRun&) = delete;

    /// Everything except the waves and segments of the LEDs, which are empty.
    const LedWaves& waves() const;

    /// Runs the next tick, at first tick 0, and returns the LEDs that are lit in it.
    std::uint32_t next();

private:
    const std::unique_ptr<LedSequence> m_sequence;
};

/// For each tick of `segment`, the light of the last cover, which all others hide. NONE in a tick
/// without a cover.
std::vector<LedLight> hiddenLights(const LedSegment& segment);

/// The line that names `row` as people write it, without the number if that is 0: "line ring".
std::string commandOf(const LedSequencerProfile::Command& row);

} // namespace board
