#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <list>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "LedCtrl.h"

/// An independent model of what each LED shows and what drives it. It applies the documented rules
/// to one LED after another.
namespace support {

class LedModel {
public:
    explicit LedModel(const std::vector<LedCtrl::CmdDef>& rows, std::uint32_t blinkPattern = 0)
        : m_rows(rows), m_blinkPattern(blinkPattern) {}

    void runDefaults(const std::string& line) {
        m_actions.clear();
        m_lastOf.clear();
        for (Lamp& lamp : m_lamps)
            lamp.isOwned = false;
        for (std::size_t i = 0; i < m_rows.size(); ++i)
            if (m_rows[i].isDefault)
                run(i, line, true);
    }

    void run(std::size_t index, const std::string& line, bool asDefault = false) {
        const LedCtrl::CmdDef& row = m_rows[index];
        const Cause cause{++m_runs, index, asDefault ? "default " + line : line, m_tick};
        if (row.group > 0 && m_lastOf.count(row.group) != 0)
            end(m_rows[m_lastOf[row.group]], cause);
        const bool isRoll = row.action == LedCtrl::ACTION_ROLL_UP || //
                            row.action == LedCtrl::ACTION_ROLL_DOWN;
        const bool lights = row.action == LedCtrl::ACTION_ON || row.action == LedCtrl::ACTION_BLINK;
        if (isRoll || (lights && row.timeMs != 0)) {
            const auto ticks = static_cast<std::uint32_t>(row.timeMs) * 1000U + 99999U;
            m_actions.push_back({cause, ticks / 100000U, row.timeMs == 0, 0});
        }
        for (Lamp* const lamp : lamps(row.ledMask)) {
            if (isRoll || (lights && row.timeMs != 0))
                lamp->isOwned = true;
            else if (lights)
                lamp->set(row.action == LedCtrl::ACTION_ON ? 's' : 'b', cause);
            else if (row.action == LedCtrl::ACTION_OFF)
                lamp->set('-', cause);
            else if (row.action == LedCtrl::ACTION_FLASH)
                lamp->flash = cause;
        }
        if (isRoll || lights)
            m_lastOf[row.group] = index;
        if (row.action == LedCtrl::ACTION_ROLL_STOP)
            endRoll(row);
        if (row.action == LedCtrl::ACTION_DEFAULTS && !asDefault)
            runDefaults(line);
    }

    void tick() {
        ++m_tick;
        for (auto action = m_actions.begin(); action != m_actions.end();)
            if (action->left == 0 && !action->isEndless) {
                const LedCtrl::CmdDef& row = m_rows[action->cause.row];
                disown(row.ledMask);
                m_lastOf.erase(row.group);
                action = m_actions.erase(action);
            } else {
                --action->left;
                roll(*action);
                ++action;
            }
        for (Lamp& lamp : m_lamps) {
            lamp.shownFlash = lamp.isOwned ? std::nullopt : lamp.flash;
            lamp.flash.reset();
        }
    }

    /// Whether any bit of the LED was lit in the last tick.
    bool isLit(std::uint32_t led) {
        for (const Action& action : m_actions) {
            const LedCtrl::CmdDef& row = m_rows[action.cause.row];
            const std::uint32_t rolled = row.ledMask & 1U << action.position;
            const bool isSteady = row.action == LedCtrl::ACTION_ON;
            const bool isBlink = row.action == LedCtrl::ACTION_BLINK;
            const std::uint32_t all = isSteady || isBlinkLit() ? row.ledMask : 0;
            if (((isSteady || isBlink ? all : rolled) & led) != 0)
                return true;
        }
        const auto all = lamps(led);
        return std::any_of(all.begin(), all.end(), [&](const Lamp* lamp) {
            return lamp->shownFlash || (!lamp->isOwned && (lamp->kind == 's' || //
                                                           (lamp->kind == 'b' && isBlinkLit())));
        });
    }

    /// The rows that hold the LED, one per line. The first one drives it.
    std::string holders(std::uint32_t led) {
        std::ostringstream text;
        const auto add = [&](const Cause& cause, const std::string& left, bool isShown) {
            text << "row " << cause.row << ", line '" << cause.line << "', tick " << cause.tick
                 << ", left " << left << (isShown ? "\n" : ", hidden\n");
        };
        for (auto action = m_actions.rbegin(); action != m_actions.rend(); ++action)
            if ((m_rows[action->cause.row].ledMask & led) != 0)
                add(action->cause, action->isEndless ? "-" : std::to_string(action->left), true);
        std::map<unsigned, Cause, std::greater<>> flashes, states, ended;
        std::map<unsigned, bool> isShown;
        for (const Lamp* const lamp : lamps(led)) {
            if (lamp->shownFlash)
                flashes.emplace(lamp->shownFlash->number, *lamp->shownFlash);
            if (!lamp->cause)
                continue;
            (lamp->kind == '-' ? ended : states).emplace(lamp->cause->number, *lamp->cause);
            if (lamp->kind != '-' && !lamp->isOwned)
                isShown[lamp->cause->number] = true;
        }
        for (const auto& [number, cause] : flashes)
            add(cause, "0", true);
        for (const auto& [number, cause] : states)
            add(cause, "-", isShown[number]);
        if (text.str().empty() && !ended.empty())
            add(ended.begin()->second, "-", true);
        return text.str();
    }

private:
    struct Cause {
        unsigned number;
        std::size_t row;
        std::string line;
        unsigned tick;
    };
    struct Lamp {
        void set(char itsKind, const Cause& itsCause) {
            kind = itsKind;
            cause = itsCause;
        }
        char kind = '-'; ///< s: steady, b: blinking
        std::optional<Cause> cause, flash, shownFlash;
        bool isOwned = false;
    };
    struct Action {
        Cause cause;
        std::uint32_t left;
        bool isEndless;
        unsigned position; ///< the LED that a roll shows
    };

    /// The pattern is loaded in tick 32 and every 33 ticks after it; its last bit shows twice.
    bool isBlinkLit() const {
        return m_tick > 32 && (m_blinkPattern >> std::min((m_tick - 33) % 33, 31U) & 1U) != 0;
    }

    void roll(Action& action) const {
        const LedCtrl::CmdDef& row = m_rows[action.cause.row];
        if (row.action == LedCtrl::ACTION_ROLL_UP || row.action == LedCtrl::ACTION_ROLL_DOWN)
            do
                action.position += row.action == LedCtrl::ACTION_ROLL_UP ? 1 : 31;
            while ((row.ledMask >> (action.position %= 32) & 1U) == 0);
    }

    std::vector<Lamp*> lamps(std::uint32_t mask) {
        std::vector<Lamp*> found;
        for (std::size_t i = 0; i < m_lamps.size(); ++i)
            if ((mask >> i & 1U) != 0)
                found.push_back(&m_lamps[i]);
        return found;
    }

    void disown(std::uint32_t mask) {
        for (Lamp* const lamp : lamps(mask))
            lamp->isOwned = false;
    }

    void end(const LedCtrl::CmdDef& row, const Cause& by) {
        if (row.timeMs > 0) {
            const auto found =
                std::find_if(m_actions.begin(), m_actions.end(), [&](const Action& action) {
                    return &m_rows[action.cause.row] == &row;
                });
            if (found == m_actions.end())
                return;
            disown(row.ledMask);
            m_actions.erase(found);
            m_lastOf.erase(row.group);
        } else if (row.action == LedCtrl::ACTION_ON || row.action == LedCtrl::ACTION_BLINK) {
            for (Lamp* const lamp : lamps(row.ledMask))
                if (lamp->kind == (row.action == LedCtrl::ACTION_ON ? 's' : 'b'))
                    lamp->set('-', by);
            m_lastOf.erase(row.group);
        } else {
            endRoll(row);
        }
    }

    void endRoll(const LedCtrl::CmdDef& row) {
        disown(row.ledMask);
        m_lastOf.erase(row.group);
        const auto found =
            std::find_if(m_actions.begin(), m_actions.end(), [&](const Action& action) {
                const LedCtrl::CmdDef& other = m_rows[action.cause.row];
                return (other.action == LedCtrl::ACTION_ROLL_UP ||
                        other.action == LedCtrl::ACTION_ROLL_DOWN) &&
                       other.ledMask == row.ledMask && std::string(other.word1) == row.word1;
            });
        if (found != m_actions.end())
            m_actions.erase(found);
    }

    const std::vector<LedCtrl::CmdDef>& m_rows;
    std::uint32_t m_blinkPattern;
    std::array<Lamp, 32> m_lamps;
    std::list<Action> m_actions;
    std::map<std::int32_t, std::size_t> m_lastOf;
    unsigned m_runs = 0, m_tick = 0;
};

} // namespace support
