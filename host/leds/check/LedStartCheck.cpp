#include "leds/check/LedStartCheck.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "LedCtrl.h"
#include "leds/LedRow.h"
#include "leds/check/LedRows.h"

namespace board {

namespace {

using Rows = std::vector<LedCtrl::CmdDef>;

Rows rowsOf(const LedSequencerProfile& tables) {
    Rows rows;
    for (const LedRow& row : tables.commands)
        rows.push_back(definitionOf(row));
    return rows;
}

/// The library's sequencer at its start, without a thread.
class Start : private LedCtrl {
public:
    Start(const LedSequencerProfile& tables, const Rows& rows)
        : LedCtrl(rows.data(), static_cast<unsigned>(rows.size()), nullptr, 0, ACCESS_NONE,
                  tables.tickMs, tables.blinkPattern, NotStarted()),
          m_tables(tables), m_rows(rows), m_losses(rows.size()) {
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (rows[i].isDefault)
                run(i);
    }

    void report(LedFindings& findings) const {
        for (std::size_t i = 0; i < m_rows.size(); ++i)
            if (m_losses[i].by)
                reportLoss(m_tables.commands[i], m_losses[i], findings);
        reportActions(findings);
    }

private:
    /// What a default row has lost to later default rows.
    struct Loss {
        const LedRow* by = nullptr; ///< the first of these, or the one that has ended the row
        std::uint32_t leds = 0;
        bool isEnded = false; ///< it has lost everything, to `by`
    };

    bool isRunning(const CmdDef& row) const {
        const auto& actions = view().actions;
        return std::any_of(actions.begin(), actions.end(),
                           [&](const ActionDesc& action) { return action.cmd == &row; });
    }

    void run(std::size_t index) {
        const CmdDef& row = m_rows[index];
        const std::uint32_t steady = view().steadyMask, blinking = view().blinkMask;
        std::vector<std::size_t> running;
        for (const ActionDesc& action : view().actions)
            running.push_back(indexOf(action));
        // A default row with ACTION_DEFAULTS runs nothing itself: it only ends what the previous
        // row of its group started.
        if (row.action != ACTION_DEFAULTS)
            executeCmd(row);
        else if (row.group > 0)
            stopGroupAction(row);
        forEachLed((steady & ~view().steadyMask) | (blinking & ~view().blinkMask),
                   [&](unsigned led) {
                       if (m_owners[led])
                           lose(*m_owners[led], index, 1U << led);
                       m_owners[led].reset();
                   });
        // A roll-stop, or a group that ends a roll whose time is 0 or negative, ends the oldest
        // roll with the same first word and LEDs. That may be a roll of another group.
        for (const std::size_t former : running)
            if (!isRunning(m_rows[former]))
                m_losses[former] = {&m_tables.commands[index], 0, true};
        if (const auto leader = m_leaders.find(row.group); leader != m_leaders.end()) {
            if (holdsState(m_rows[leader->second]))
                m_losses[leader->second] = {&m_tables.commands[index], 0, true};
            m_leaders.erase(leader);
        }
        if (holdsState(row))
            forEachLed(row.ledMask, [&](unsigned led) { m_owners[led] = index; });
        if (leadsGroup(row))
            m_leaders[row.group] = index;
    }

    void lose(std::size_t row, std::size_t by, std::uint32_t leds) {
        Loss& loss = m_losses[row];
        if (!loss.by)
            loss.by = &m_tables.commands[by];
        loss.leds |= leds;
    }

    static void reportLoss(const LedRow& row, const Loss& loss, LedFindings& findings) {
        const bool isMate = row.group > 0 && row.group == loss.by->group;
        if (loss.isEnded)
            findings.add(
                LedFinding::Level::MISTAKE, row, "default",
                "the start does not show this row: " + loss.by->place +
                    (isMate ? ", a default row of the same group" : ", a default row too") +
                    ", ends it before the first tick");
        else if (loss.leds == row.mask)
            findings.add(LedFinding::Level::MISTAKE, row, "default",
                         "the start does not show this row: " + loss.by->place +
                             ", also a default row, changes its LEDs before the first tick");
        else
            findings.add(LedFinding::Level::DOUBT, row, "default",
                         "the start does not show this row on " + hexOf(loss.leds) + ": " +
                             loss.by->place +
                             ", also a default row, changes that before the first tick");
    }

    /// Reports actions that share LEDs, and states that endless rolls hide.
    void reportActions(LedFindings& findings) const {
        std::array<const LedRow*, 32> running{}, endless{};
        for (const ActionDesc& action : view().actions) {
            const LedRow& row = m_tables.commands[indexOf(action)];
            const LedRow* other = nullptr;
            std::uint32_t shared = 0;
            forEachLed(row.mask & view().actionMask, [&](unsigned led) {
                if (running[led]) {
                    shared |= 1U << led;
                    other = other ? other : running[led];
                }
                running[led] = &row;
                if (action.endless)
                    endless[led] = &row;
            });
            if (shared != 0)
                findings.add(LedFinding::Level::DOUBT, row, "default",
                             "the start mixes this row with " + other->place +
                                 ", also a default row: " + hexOf(shared) +
                                 " is lit when either row lights it");
        }
        std::map<std::size_t, std::pair<const LedRow*, std::uint32_t>> hidden;
        for (unsigned bit = 0; bit < m_owners.size(); ++bit)
            if (m_owners[bit] && endless[bit]) {
                auto& [by, leds] = hidden[*m_owners[bit]];
                by = endless[bit];
                leds |= 1U << bit;
            }
        for (const auto& [row, by] : hidden)
            findings.add(LedFinding::Level::DOUBT, m_tables.commands[row], "default",
                         "the start does not show this row on " + hexOf(by.second) + ": " +
                             by.first->place + ", a default roll without a time, hides it");
    }

    std::size_t indexOf(const ActionDesc& action) const {
        return static_cast<std::size_t>(action.cmd - m_rows.data());
    }

    const LedSequencerProfile& m_tables;
    const Rows& m_rows;
    std::vector<Loss> m_losses;                            ///< one for each row
    std::array<std::optional<std::size_t>, 32> m_owners{}; ///< the row that holds an LED's state
    std::map<std::int32_t, std::size_t> m_leaders;         ///< what the next row of a group ends
};

} // namespace

void checkLedStart(const LedSequencerProfile& tables, LedFindings& findings) {
    const Rows rows = rowsOf(tables);
    Start(tables, rows).report(findings);
}

} // namespace board
