#include "leds/TracedLedCtrl.h"

#include <algorithm>

#include "leds/LedRow.h"

namespace board {

namespace {

constexpr std::uint32_t ALL_LEDS = 0xFFFFFFFF;

} // namespace

UnmarkedLedRows::UnmarkedLedRows(const LedTable& table) : m_rows(table.commands()) {
    for (LedCtrl::CmdDef& row : m_rows)
        row.isDefault = false;
}

TracedLedCtrl::TracedLedCtrl(const LedSequencerProfile& profile, const LedTable& table,
                             const std::vector<FileNameMap>& files)
    : UnmarkedLedRows(table),
      LedCtrl(m_rows.data(), static_cast<unsigned>(m_rows.size()), files.data(),
              static_cast<unsigned>(files.size()), profile.access, profile.tickMs,
              profile.blinkPattern, NotStarted()),
      m_profile(profile), m_table(table) {}

std::vector<LedExplanation> TracedLedCtrl::explain() const {
    std::unique_lock<std::mutex> hold(m_mutex);
    const LedTrace trace = m_lastTick;
    hold.unlock();
    return trace.explain(m_profile, m_table.leds());
}

LedTrace::Run TracedLedCtrl::newRun(const CmdDef& row, LedRun::Origin origin,
                                    const std::string& line, const TYTime& since) {
    return std::make_shared<const LedRun>(
        LedRun{static_cast<std::size_t>(&row - m_rows.data()), origin, line, since, ++m_runs});
}

void TracedLedCtrl::traceWhile(const CmdDef& row, const LedTrace::Run& run,
                               const std::function<void()>& act) {
    const LedTrace::Masks before = LedTrace::masksOf(view());
    act();
    m_trace.onRun(row, run, before, view());
    m_hasChanged = true;
}

void TracedLedCtrl::runDefaults(const TYTime& now) {
    setupDefault();
    runDefaultRows(LedRun::Origin::START, "", now);
}

void TracedLedCtrl::runDefaultRows(LedRun::Origin origin, const std::string& line,
                                   const TYTime& now) {
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        const CmdDef& row = m_rows[i];
        if (!m_table.commands()[i].isDefault)
            continue;
        traceWhile(row, newRun(row, origin, line, now), [&] {
            // A default row with ACTION_DEFAULTS runs nothing itself: it only ends what the
            // previous row of its group started.
            if (row.action != ACTION_DEFAULTS)
                executeCmd(row);
            else if (row.group > 0)
                stopGroupAction(row);
        });
    }
}

bool TracedLedCtrl::handle(char* line, const TYTime& now) {
    const CmdDef* const row = find(line);
    if (!row)
        return false;
    traceWhile(*row, newRun(*row, LedRun::Origin::LINE, line, now), [&] { handleCmd(line); });
    if (row->action == ACTION_DEFAULTS) // handleCmd knows no default rows
        runDefaultRows(LedRun::Origin::DEFAULTS, line, now);
    return true;
}

void TracedLedCtrl::tick() {
    if (m_suspended) {
        update();
        return;
    }
    traceTick([this] { update(); });
    const std::lock_guard<std::mutex> hold(m_mutex);
    m_lastTick = m_trace; // allocates nothing unless there are more actions than ever before
}

void TracedLedCtrl::traceTick(const std::function<void()>& act) {
    const std::uint32_t flashes = view().flashMask;
    const std::size_t running = view().actions.size();
    act();
    m_trace.onTick(flashes, view());
    m_hasChanged = m_hasChanged || view().actions.size() != running;
}

std::uint32_t TracedLedCtrl::advance() {
    std::uint32_t output = 0;
    traceTick([&] { output = nextOutput(); });
    return output;
}

std::vector<LedExplanation> TracedLedCtrl::explainNow() const {
    return m_trace.explain(m_profile, m_table.leds());
}

std::vector<LedHold> TracedLedCtrl::holds() const {
    std::vector<LedHold> list;
    for (auto& [run, hold] : m_trace.holds(m_rows.data(), view())) {
        const CmdDef& row = m_rows[run->row];
        hold.line = run->isDefault() ? lineOf(row) : run->line;
        hold.since = run->since;
        // The memory can't hold an empty line, and no line runs a row that an earlier row hides.
        if (!hold.line.empty() && find(hold.line.c_str()) == &row)
            list.push_back(hold);
    }
    return list;
}

void TracedLedCtrl::executeApart(CmdDef row, const LedTrace::Run& run) {
    row.group = 0;
    m_apart.push_back(row);
    const CmdDef& kept = m_apart.back();
    traceWhile(kept, run, [&] { executeCmd(kept); });
}

void TracedLedCtrl::setMasks(const LedTrace::Masks& masks) {
    const LedTrace::Run nothing;
    executeApart({"", "", 0, ALL_LEDS, ACTION_OFF, 0, 0, false}, nothing);
    executeApart({"", "", 0, masks.steady, ACTION_ON, 0, 0, false}, nothing);
    executeApart({"", "", 0, masks.blinking, ACTION_BLINK, 0, 0, false}, nothing);
}

void TracedLedCtrl::restore(const std::vector<LedHold>& holds) {
    // End the rolls of the default rows: `holds` has those that were still running.
    for (;;) {
        const auto& actions = view().actions;
        const auto roll = std::find_if(actions.begin(), actions.end(),
                                       [](const ActionDesc& each) { return each.endless; });
        if (roll == actions.end())
            break;
        const CmdDef row = *roll->cmd;
        stopAction(row);
    }
    const LedTrace afterDefaults = m_trace;
    LedTrace::Masks masks = LedTrace::masksOf(view());
    std::vector<std::pair<std::uint32_t, LedTrace::Run>> held;
    for (const LedHold& hold : holds) {
        const CmdDef* const row = find(hold.line.c_str());
        if (!row)
            continue;
        const LedTrace::Run run = newRun(*row, LedRun::Origin::REMEMBERED, hold.line, hold.since);
        const bool rolls = hold.rolls && isEndlessRoll(*row);
        if (hold.leadsGroup && (rolls || changesState(*row)))
            traceWhile(*row, run, [&] { executeCmd(*row); });
        else if (rolls)
            executeApart(*row, run);
        const std::uint32_t all = hold.steady | hold.blinking | hold.off;
        masks = {(masks.steady & ~all) | hold.steady, (masks.blinking & ~all) | hold.blinking};
        held.emplace_back(all, run);
    }
    // The rows above may have changed more LEDs than they still held at the restart.
    setMasks(masks);
    m_trace.restoreMasks(afterDefaults);
    for (const auto& [mask, run] : held)
        m_trace.attribute(mask, run);
}

void TracedLedCtrl::rerun(const std::vector<LedHold>& holds,
                          const std::function<void(const LedHold&)>& drop) {
    for (const LedHold& hold : holds)
        if (const CmdDef* const row = find(hold.line.c_str()); !row)
            drop(hold);
        else if (changesState(*row) || isEndlessRoll(*row))
            traceWhile(*row, newRun(*row, LedRun::Origin::REMEMBERED, hold.line, hold.since),
                       [&] { executeCmd(*row); });
}

} // namespace board
