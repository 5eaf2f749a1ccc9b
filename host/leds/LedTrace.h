#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "LedCtrl.h"
#include "TYTime.h"
#include "leds/LedTable.h"

namespace board {

/// One execution of a row of the command table.
struct LedRun {
    enum class Origin {
        START,      ///< a default row, when the service started
        LINE,       ///< a line from the pipe
        DEFAULTS,   ///< a default row, because a line's row has the action "defaults"
        REMEMBERED, ///< a line from before the service was restarted
    };

    std::size_t row = 0; ///< its index in the table
    Origin origin = Origin::START;
    std::string line; ///< the line that led to it; empty at the start
    TYTime since;     ///< by the calendar clock
    /// Counts the executions; a later one has a higher number.
    std::uint64_t number = 0;

    /// Whether it is a default row that ran as one.
    bool isDefault() const { return origin == Origin::START || origin == Origin::DEFAULTS; }
};

/// Why an LED shows something, or would show it if nothing hid it.
struct LedCause {
    LedRun run;
    std::string words; ///< the line that names the row, with its number
    std::string place; ///< where the row is: "FILE:LINE: leds.command[N]"
    LedCtrl::ActionKind action = LedCtrl::ACTION_ON;
    /// How many more ticks the cause lasts; empty if it lasts until something else ends it.
    std::optional<std::uint32_t> ticksLeft;
    /// Whether the LED shows it now. If several causes show, the LED is lit if any of them lights
    /// it.
    bool isShown = false;
};

/// What an LED shows, and why.
struct LedExplanation {
    std::string name;
    std::uint32_t mask = 0;
    LedColor color = LedColor::UNKNOWN;
    bool isLit = false;  ///< in the last tick
    bool isHeld = false; ///< false if `driver` has only ended what held the LED
    /// What determines the LED's state. For an LED that nothing holds, the last row that ended its
    /// steady or blinking state, even if there was none to end; empty if there is no such row.
    std::optional<LedCause> driver;
    /// What else holds the LED, hidden by `driver` or shown with it: first actions, the newest
    /// first, then a flash, then a steady or blinking state.
    std::vector<LedCause> covers;
};

/// What a row still holds without a time limit, so that it can be restored after a restart.
struct LedHold {
    std::string line; ///< a line that names the row
    TYTime since;
    std::uint32_t steady = 0, blinking = 0, off = 0; ///< the LEDs whose state comes from the row
    bool rolls = false;                              ///< its endless roll runs
    bool leadsGroup = false; ///< the next row of its group ends what it started
};

/// Knows which executed row each part of the sequencer's state comes from. The sequencer does not
/// record that, so this class compares its state before and after each row. A copy keeps what was
/// known when it was made. Memory is bounded: of the running actions, only the newest few hundred
/// are known.
class LedTrace {
public:
    using Run = std::shared_ptr<const LedRun>;

    /// The LEDs that are lit or blink without a time limit, even if an action hides that.
    struct Masks {
        std::uint32_t steady, blinking;
    };
    static Masks masksOf(const LedCtrl::View& view) { return {view.steadyMask, view.blinkMask}; }

    /// `row` was executed as `run`, which changed `before` into `after`.
    void onRun(const LedCtrl::CmdDef& row, const Run& run, const Masks& before,
               const LedCtrl::View& after);
    /// A tick has passed. `flashes` are the LEDs that were to flash in it.
    void onTick(std::uint32_t flashes, const LedCtrl::View& after);
    /// From now on, `run` counts as the origin of the state that the LEDs in `mask` have.
    void attribute(std::uint32_t mask, const Run& run);
    /// Sets the origins of the steady, blinking and off states back to those in `earlier`.
    void restoreMasks(const LedTrace& earlier) { m_static = earlier.m_static; }

    /// The LEDs that were lit in the last tick.
    std::uint32_t output() const { return m_output; }

    /// `profile` and `leds` are those of the sequencer.
    std::vector<LedExplanation> explain(const LedSequencerProfile& profile,
                                        const std::vector<Led>& leds) const;

    /// What is held without a time limit, in the order of execution. Default rows run again after a
    /// restart, so only their rolls are included. `after` is the present state.
    std::vector<std::pair<Run, LedHold>> holds(const LedCtrl::CmdDef* rows,
                                               const LedCtrl::View& after) const;

private:
    struct Action {
        const LedCtrl::ActionDesc* action; ///< only compared: the action may have ended
        Run run;
        std::uint32_t mask;
        std::uint32_t ticksLeft;
        bool isEndless;
    };
    struct Group {
        std::int32_t number;
        Run run; ///< the group's last run that started something
    };
    struct Found {
        Run run;
        std::optional<std::uint32_t> ticksLeft;
        bool isShown;
        bool isHeld = true;
    };

    void follow(const LedCtrl::View& view, const Run* started);
    std::vector<Found> holdersOf(std::uint32_t led) const;

    Masks m_masks{0, 0};
    std::uint32_t m_flashMask = 0, m_actionMask = 0, m_output = 0;
    std::array<Run, 32> m_static; ///< what last made each LED steady, blinking or neither
    std::array<Run, 32> m_flash;
    std::vector<Action> m_actions; ///< the oldest first
    std::vector<Group> m_groups;
};

} // namespace board
