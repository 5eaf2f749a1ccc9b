#include "leds/LedTrace.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "leds/LedRow.h"

namespace board {

namespace {

constexpr std::size_t MOST_ACTIONS = 256;

/// What `action` lit in the last tick.
std::uint32_t shownBy(const LedCtrl::ActionDesc& action, bool isBlinkLit) {
    const std::uint32_t mask = action.cmd->ledMask;
    if (isRoll(*action.cmd))
        return action.rollBit & mask;
    return action.cmd->action == LedCtrl::ACTION_ON || isBlinkLit ? mask : 0;
}

/// The runs of the LEDs in `mask`, each once, the newest first.
std::vector<LedTrace::Run> runsOf(const std::array<LedTrace::Run, 32>& runs, std::uint32_t mask) {
    std::vector<LedTrace::Run> found;
    forEachLed(mask, [&](unsigned led) {
        if (runs[led])
            found.push_back(runs[led]);
    });
    std::sort(found.begin(), found.end(),
              [](const auto& a, const auto& b) { return a->number > b->number; });
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

} // namespace

void LedTrace::onRun(const LedCtrl::CmdDef& row, const Run& run, const Masks& before,
                     const LedCtrl::View& after) {
    // This row may also have ended what the former row of its group held.
    std::uint32_t touched =
        (before.steady ^ after.steadyMask) | (before.blinking ^ after.blinkMask);
    if (changesState(row))
        touched |= row.ledMask;
    attribute(touched, run);
    if (row.action == LedCtrl::ACTION_FLASH)
        forEachLed(row.ledMask, [&](unsigned led) { m_flash[led] = run; });
    follow(after, startsAction(row) ? &run : nullptr);
    if (!leadsGroup(row))
        return;
    const auto known = std::find_if(m_groups.begin(), m_groups.end(),
                                    [&](const Group& group) { return group.number == row.group; });
    if (known != m_groups.end())
        known->run = run;
    else
        m_groups.push_back({row.group, run});
}

void LedTrace::attribute(std::uint32_t mask, const Run& run) {
    forEachLed(mask, [&](unsigned led) { m_static[led] = run; });
}

void LedTrace::follow(const LedCtrl::View& view, const Run* started) {
    // A new action is appended to the sequencer's list; the order never changes. The loop skips the
    // new action, which may have the address of an action that this row ended.
    auto running = view.actions.rbegin();
    if (started)
        ++running;
    for (auto known = m_actions.rbegin(); known != m_actions.rend(); ++known) {
        if (running != view.actions.rend() && known->action == &*running) {
            known->ticksLeft = running->ticksLeft;
            ++running;
        } else {
            known->action = nullptr;
        }
    }
    m_actions.erase(std::remove_if(m_actions.begin(), m_actions.end(),
                                   [](const Action& each) { return !each.action; }),
                    m_actions.end());
    if (!started)
        return;
    if (m_actions.size() == MOST_ACTIONS)
        m_actions.erase(m_actions.begin());
    const LedCtrl::ActionDesc& action = view.actions.back();
    m_actions.push_back({&action, *started, action.cmd->ledMask, action.ticksLeft, action.endless});
}

void LedTrace::onTick(std::uint32_t flashes, const LedCtrl::View& after) {
    follow(after, nullptr);
    const bool isBlinkLit = (after.phase & 1) != 0;
    m_masks = masksOf(after);
    m_actionMask = after.actionMask;
    m_flashMask = flashes & ~m_actionMask;
    m_output = (m_masks.steady | (isBlinkLit ? m_masks.blinking : 0)) & ~m_actionMask;
    m_output |= m_flashMask;
    for (const LedCtrl::ActionDesc& action : after.actions)
        m_output |= shownBy(action, isBlinkLit);
}

std::vector<LedTrace::Found> LedTrace::holdersOf(std::uint32_t led) const {
    std::vector<Found> holders;
    for (auto action = m_actions.rbegin(); action != m_actions.rend(); ++action)
        if ((action->mask & led) != 0)
            holders.push_back({action->run,
                               action->isEndless ? std::nullopt : std::optional(action->ticksLeft),
                               true});
    for (const Run& run : runsOf(m_flash, m_flashMask & led))
        holders.push_back({run, 0, true});
    const std::uint32_t held = (m_masks.steady | m_masks.blinking) & led;
    const std::vector<Run> shown = runsOf(m_static, held & ~m_actionMask);
    for (const Run& run : runsOf(m_static, held))
        holders.push_back(
            {run, std::nullopt, std::find(shown.begin(), shown.end(), run) != shown.end()});
    if (holders.empty())
        if (const std::vector<Run> ended = runsOf(m_static, led); !ended.empty())
            holders.push_back({ended.front(), std::nullopt, true, false});
    return holders;
}

std::vector<LedExplanation> LedTrace::explain(const LedSequencerProfile& profile,
                                              const std::vector<Led>& leds) const {
    std::vector<LedExplanation> explanations;
    for (const Led& led : leds) {
        LedExplanation explanation{led.name, led.mask, led.color, (m_output & led.mask) != 0,
                                   false,    {},       {}};
        for (const Found& found : holdersOf(led.mask)) {
            const LedRow& row = profile.commands[found.run->row];
            LedCause cause{*found.run, lineOf(row),     row.place,
                           row.action, found.ticksLeft, found.isShown};
            if (explanation.driver)
                explanation.covers.push_back(std::move(cause));
            else {
                explanation.isHeld = found.isHeld;
                explanation.driver = std::move(cause);
            }
        }
        explanations.push_back(std::move(explanation));
    }
    return explanations;
}

std::vector<std::pair<LedTrace::Run, LedHold>> LedTrace::holds(const LedCtrl::CmdDef* rows,
                                                               const LedCtrl::View& after) const {
    std::map<std::uint64_t, std::pair<Run, LedHold>> holds;
    const auto holdOf = [&](const Run& run) -> LedHold& {
        auto& hold = holds[run->number];
        hold.first = run;
        return hold.second;
    };
    for (unsigned led = 0; led < m_static.size(); ++led) {
        const Run& run = m_static[led];
        const std::uint32_t bit = 1U << led;
        if (!run || run->isDefault())
            continue;
        LedHold& hold = holdOf(run);
        if ((after.steadyMask & bit) != 0)
            hold.steady |= bit;
        else
            ((after.blinkMask & bit) != 0 ? hold.blinking : hold.off) |= bit;
    }
    for (const Action& action : m_actions)
        if (action.isEndless)
            holdOf(action.run).rolls = true;
    for (const Group& group : m_groups) {
        const LedCtrl::CmdDef& row = rows[group.run->row];
        const auto last = after.groups.find(group.number);
        const auto known = holds.find(group.run->number);
        const bool rolls = known != holds.end() && known->second.second.rolls;
        if (last != after.groups.end() && last->second == &row &&
            (rolls || (holdsState(row) && !group.run->isDefault())))
            holdOf(group.run).leadsGroup = true;
    }
    std::vector<std::pair<Run, LedHold>> list;
    for (auto& [number, hold] : holds)
        list.push_back(std::move(hold));
    return list;
}

} // namespace board
