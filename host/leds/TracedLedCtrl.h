#pragma once

#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <vector>

#include "LedCtrl.h"
#include "leds/LedTrace.h"

namespace board {

/// A table's rows without their default marks. TracedLedCtrl inherits them, so that they exist
/// before its other base, LedCtrl.
struct UnmarkedLedRows {
    explicit UnmarkedLedRows(const LedTable& table);
    std::vector<LedCtrl::CmdDef> m_rows;
};

/// The library's sequencer, which can also explain what it shows. Its ticks do the same as the
/// library's. It runs the default rows itself, one by one, to see what each of them changes.
///
/// Everything except `explain` is for the LED thread, or for one other thread while the LED
/// thread is not running.
class TracedLedCtrl : private UnmarkedLedRows, public LedCtrl {
public:
    /// Does not start the thread. The tables must outlive the object.
    TracedLedCtrl(const LedSequencerProfile& profile, const LedTable& table,
                  const std::vector<FileNameMap>& files);

    /// One explanation for each LED of the table, in the table's order, as of the last tick. Any
    /// thread.
    std::vector<LedExplanation> explain() const;

protected:
    /// Runs the default rows, as the service does when it starts.
    void runDefaults(const TYTime& now);
    /// Runs the row that `line` names. False if there is no such row.
    bool handle(char* line, const TYTime& now);
    /// Advances everything by one tick and shows the result.
    void tick();
    /// The LEDs that were lit in the last tick.
    std::uint32_t lit() const { return m_trace.output(); }
    /// The same as `tick` for a preview: returns the LEDs that are lit in the tick instead of
    /// showing them. Only `explainNow` covers this tick, not `explain`.
    std::uint32_t advance();
    const CmdDef* firstRow() const { return m_rows.data(); }
    /// The same as `explain`, but as of the last `tick` or `advance`.
    std::vector<LedExplanation> explainNow() const;

    /// What is held without a time limit, in the order of execution. A default row's roll is left
    /// out if no line names the row.
    std::vector<LedHold> holds() const;
    /// True if the result of `holds` may have changed since the last call. The `driver` of an LED
    /// changes only if this is true, or when a flash begins or ends.
    bool hasChanged() { return std::exchange(m_hasChanged, false); }
    /// Holds again what `holds` returned before the service was restarted. Call it after
    /// `runDefaults`, with the same table.
    void restore(const std::vector<LedHold>& holds);
    /// Call it instead of `restore` if the table has changed. Runs those of the remembered lines
    /// whose rows change a state or roll without a time limit. Calls `drop` for each line that no
    /// row matches.
    void rerun(const std::vector<LedHold>& holds, const std::function<void(const LedHold&)>& drop);

private:
    LedTrace::Run newRun(const CmdDef& row, LedRun::Origin origin, const std::string& line,
                         const TYTime& since);
    void runDefaultRows(LedRun::Origin origin, const std::string& line, const TYTime& now);
    void traceWhile(const CmdDef& row, const LedTrace::Run& run, const std::function<void()>& act);
    /// Executes a copy of `row` outside the table and without a group.
    void executeApart(CmdDef row, const LedTrace::Run& run);
    void traceTick(const std::function<void()>& act);
    void setMasks(const LedTrace::Masks& masks);

    const LedSequencerProfile& m_profile;
    const LedTable& m_table;
    std::list<CmdDef> m_apart; ///< what `executeApart` runs; addresses must not change
    std::uint64_t m_runs = 0;
    bool m_hasChanged = true;
    LedTrace m_trace;
    mutable std::mutex m_mutex; ///< guards m_lastTick
    LedTrace m_lastTick;        ///< a copy for other threads
};

} // namespace board
