#pragma once

#include <optional>

#include "leds/TracedLedCtrl.h"
#include "leds/preview/LedPreview.h"

namespace board {

/// The library's sequencer without its thread, pipe and files: its caller makes it tick. It can
/// explain what it shows.
class SteppedLedCtrl : public TracedLedCtrl {
public:
    /// Both arguments must outlive the object.
    SteppedLedCtrl(const LedSequencerProfile& profile, const LedTable& table)
        : TracedLedCtrl(profile, table, {}) {}

    /// Runs the default rows. Call it once, before anything else.
    void runDefaults() { TracedLedCtrl::runDefaults(TYTime()); }

    /// Lets ticks pass before the default rows run.
    void skip(unsigned ticks);

    /// The index of the row that `line` names; empty if there is none.
    std::optional<std::size_t> rowOf(const std::string& line) const;

    /// The row at `index` in the table, and the index of a row.
    const CmdDef* rowAt(std::size_t index) const { return firstRow() + index; }
    std::size_t indexOf(const CmdDef& row) const {
        return static_cast<std::size_t>(&row - firstRow());
    }

    /// Runs the row that `line` names, if any.
    void run(const std::string& line) {
        std::string words = line;
        handle(words.data(), TYTime());
    }

    /// Advances by one tick and returns the LEDs that are lit in it.
    std::uint32_t step();

    /// False if the same runs of rows drive and hold the LEDs as in the tick before.
    bool mayDriveOthers() const { return m_mayDriveOthers; }

    using TracedLedCtrl::explainNow;
    using TracedLedCtrl::view;

private:
    bool m_flashed = false, m_mayDriveOthers = true;
};

/// What drives `led`; if nothing holds it, the row that last put it out. LedDrive() if nothing has
/// driven it yet.
LedDrive driveOf(const LedExplanation& led, const LedSequencerProfile& profile);
LedDrive driveOf(const LedCause& cause, const LedSequencerProfile& profile);

} // namespace board
