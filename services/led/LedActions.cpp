#include <algorithm>
#include <cstring>

#include <unistd.h>

#include "LedCtrl.h"
#include "LedLog.h"
#include "RTD.h"

using RTD::VSYSLOG;
using namespace ledlog;

namespace {

constexpr std::uint32_t LOWEST_LED = 1;
constexpr std::uint32_t HIGHEST_LED = 0x80000000U;

bool isRoll(std::int32_t action) {
    return action == LedCtrl::ACTION_ROLL_UP || action == LedCtrl::ACTION_ROLL_DOWN;
}

/// Moves a roll's `bit` to the next LED of `mask` and returns the bit; 0 if the mask is empty.
std::uint32_t roll(std::uint32_t& bit, std::uint32_t mask, bool upwards) {
    if (mask == 0)
        return 0;
    do {
        if (upwards)
            bit = bit == HIGHEST_LED ? LOWEST_LED : bit << 1;
        else
            bit = bit == LOWEST_LED ? HIGHEST_LED : bit >> 1;
    } while ((bit & mask) == 0);
    return bit;
}

} // namespace

void LedCtrl::executeCmd(const CmdDef& cmd) {
    execute(cmd, false);
}

void LedCtrl::execute(const CmdDef& cmd, bool asDefault) {
    if (cmd.group > 0)
        stopGroupAction(cmd);
    switch (cmd.action) {
    case ACTION_ON:
        if (cmd.timeMs != 0)
            startAction(cmd);
        else
            setStatic(cmd, m_steadyMask, m_blinkMask);
        break;
    case ACTION_BLINK:
        if (cmd.timeMs != 0)
            startAction(cmd);
        else
            setStatic(cmd, m_blinkMask, m_steadyMask);
        break;
    case ACTION_OFF:
        m_steadyMask &= ~cmd.ledMask;
        m_blinkMask &= ~cmd.ledMask;
        break;
    case ACTION_FLASH:
        m_flashMask |= cmd.ledMask;
        break;
    case ACTION_ROLL_UP:
    case ACTION_ROLL_DOWN:
        startAction(cmd);
        break;
    case ACTION_ROLL_STOP:
        removeRollAction(cmd);
        break;
    case ACTION_DEFAULTS:
        if (!asDefault) // a default row with this action would recurse forever
            setupDefault();
        break;
    default:
        VSYSLOG(CATEGORY, TRACE, "Unknown LED command action: %d", cmd.action);
    }
}

void LedCtrl::startAction(const CmdDef& cmd) {
    // Computed in 32 bits on every machine, so a time of more than 71 minutes wraps. `m_tickUs` can
    // be 0, but only in a service that has no thread.
    const std::uint32_t timeUs = 1000U * static_cast<std::uint32_t>(cmd.timeMs);
    const std::uint32_t ticks = m_tickUs ? (m_tickUs - 1 + timeUs) / m_tickUs : 0;
    m_actionMask |= cmd.ledMask;
    m_actions.push_back(ActionDesc{&cmd, ticks, LOWEST_LED, cmd.timeMs == 0});
    m_groups[cmd.group] = &cmd;
}

void LedCtrl::setStatic(const CmdDef& cmd, std::uint32_t& mask, std::uint32_t& other) {
    mask |= cmd.ledMask;
    other &= ~cmd.ledMask;
    m_groups[cmd.group] = &cmd;
}

void LedCtrl::stopGroupAction(const CmdDef& cmd) {
    const auto found = m_groups.find(cmd.group);
    if (found == m_groups.end())
        return;
    const CmdDef& previous = *found->second;
    VSYSLOG(CATEGORY, TRACE, "Found previous group action (%s %s). Stopping action %d",
            previous.word1, previous.word2, previous.action);
    stopAction(previous);
}

void LedCtrl::stopAction(const CmdDef& cmd) {
    if (cmd.timeMs > 0) {
        const auto found =
            std::find_if(m_actions.begin(), m_actions.end(),
                         [&](const ActionDesc& action) { return action.cmd == &cmd; });
        if (found == m_actions.end())
            return;
        m_actionMask &= ~cmd.ledMask;
        m_actions.erase(found);
        m_groups.erase(cmd.group);
        return;
    }
    switch (cmd.action) {
    case ACTION_ON:
        m_groups.erase(cmd.group);
        m_steadyMask &= ~cmd.ledMask;
        break;
    case ACTION_BLINK:
        m_groups.erase(cmd.group);
        m_blinkMask &= ~cmd.ledMask;
        break;
    case ACTION_FLASH:
        m_groups.erase(cmd.group);
        m_flashMask &= ~cmd.ledMask;
        break;
    case ACTION_ROLL_UP:
    case ACTION_ROLL_DOWN:
        removeRollAction(cmd);
        break;
    default:
        VSYSLOG(CATEGORY, TRACE, "Unhandled LED action when stopping: %d", cmd.action);
    }
}

void LedCtrl::removeRollAction(const CmdDef& cmd) {
    m_actionMask &= ~cmd.ledMask;
    m_groups.erase(cmd.group);
    // Only the first word and the LEDs are compared, so that one row can stop the roll of any row
    // with the same first word and LEDs.
    const auto found =
        std::find_if(m_actions.begin(), m_actions.end(), [&](const ActionDesc& action) {
            return std::strcmp(action.cmd->word1, cmd.word1) == 0 &&
                   action.cmd->ledMask == cmd.ledMask && isRoll(action.cmd->action);
        });
    if (found != m_actions.end())
        m_actions.erase(found);
}

std::uint32_t LedCtrl::handleAction(ActionDesc& action) {
    const CmdDef& cmd = *action.cmd;
    switch (cmd.action) {
    case ACTION_ON:
        return cmd.ledMask;
    case ACTION_BLINK:
        return (m_phase & 1) != 0 ? cmd.ledMask : 0;
    case ACTION_ROLL_UP:
    case ACTION_ROLL_DOWN:
        return roll(action.rollBit, cmd.ledMask, cmd.action == ACTION_ROLL_UP);
    default:
        VSYSLOG(CATEGORY, TRACE, "Unhandled pending action: %d", cmd.action);
        return 0;
    }
}

std::uint32_t LedCtrl::updateActions() {
    std::uint32_t bits = 0;
    for (auto action = m_actions.begin(); action != m_actions.end();) {
        if (action->ticksLeft == 0 && !action->endless) {
            m_actionMask &= ~action->cmd->ledMask;
            m_groups.erase(action->cmd->group);
            action = m_actions.erase(action);
        } else {
            bits |= handleAction(*action);
            --action->ticksLeft;
            ++action;
        }
    }
    return bits;
}

std::uint32_t LedCtrl::getState() {
    std::uint32_t state = m_steadyMask | m_flashMask;
    if ((m_phase & 1) != 0)
        state |= m_blinkMask;
    m_flashMask = 0;
    return state;
}

std::uint32_t LedCtrl::nextOutput() {
    if (m_phaseCount == 32) {
        m_phaseCount = 0;
        m_phase = m_blinkPattern;
    } else {
        ++m_phaseCount;
        m_phase >>= 1; // keeps the sign bit, so bit 31 shows twice
    }
    const std::uint32_t bits = updateActions();
    const std::uint32_t state = getState();
    // m_actionMask is read after the actions have advanced, so that the LEDs of an action that has
    // just ended already show their static state.
    return (state & ~m_actionMask) | bits;
}

void LedCtrl::update() {
    if (m_suspended) {
        VSYSLOG(CATEGORY, TRACE, "Skipping LED Update!");
        return;
    }
    const std::uint32_t output = nextOutput();
    switch (m_accessMethod) {
    case ACCESS_FILES:
        writeFiles(output);
        break;
    case ACCESS_NONE:
        break;
    default:
        VSYSLOG(CATEGORY, ERROR, "Unknown LED access method: %d", static_cast<int>(m_accessMethod));
    }
}

void LedCtrl::writeFiles(std::uint32_t output) {
    for (const auto& [mask, file] : m_files) {
        if (file.fd <= 0)
            continue;
        const bool isLit = (output & static_cast<std::uint32_t>(mask)) != 0;
        const auto written = ::write(file.fd, isLit ? "1" : "0", 1);
        static_cast<void>(written); // ignored: an LED that fails must not affect the others
    }
}

void LedCtrl::setupDefault() {
    m_actionMask = 0;
    m_actions.clear();
    m_groups.clear();
    for (unsigned i = 0; i < m_commandCount; ++i)
        if (m_commands[i].isDefault)
            execute(m_commands[i], true);
}

LedCtrl::View LedCtrl::view() const {
    return {m_steadyMask, m_blinkMask, m_flashMask, m_actionMask,
            m_actions,    m_groups,    m_phase,     m_phaseCount};
}
