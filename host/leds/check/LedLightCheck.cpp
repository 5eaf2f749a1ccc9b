#include "leds/check/LedLightCheck.h"

#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "LedCtrl.h"

namespace board {

namespace {

/// The LEDs on which some row ends a state without a time limit: the row puts them out, replaces
/// the state, or ends it through the row's group.
class StateEnds {
public:
    StateEnds(const LedSequencerProfile& tables, const LedRows& rows) {
        for (const LedRow& row : tables.commands) {
            if (!rows.runs(row))
                continue;
            const bool isOn = row.action == LedCtrl::ACTION_ON;
            const bool isBlink = row.action == LedCtrl::ACTION_BLINK;
            if (row.action == LedCtrl::ACTION_OFF)
                m_off |= row.mask;
            if (holdsState(row))
                (isOn ? m_blinking : m_steady) |= row.mask;
            // When the next row of the group ends this row's state, other rows lose the same state
            // on these LEDs too. A row with a negative time holds no state, but the next row of its
            // group, even if that is the same row, ends the states of other rows in this way.
            const bool isEnded = row.timeMs == 0 ? rows.hasMate(row) : row.timeMs < 0;
            if ((isOn || isBlink) && row.group > 0 && isEnded)
                (isOn ? m_steady : m_blinking) |= row.mask;
        }
    }

    std::uint32_t ofSteady() const { return m_off | m_steady; }
    std::uint32_t ofBlinking() const { return m_off | m_blinking; }

private:
    std::uint32_t m_off = 0, m_steady = 0, m_blinking = 0;
};

void checkUnlit(const LedSequencerProfile& tables, const LedRows& rows, LedFindings& findings) {
    std::uint32_t lit = 0;
    for (const LedRow& row : tables.commands)
        if (isLighting(row) && rows.runs(row))
            lit |= row.mask;
    for (const LedSequencerProfile::File& file : tables.files)
        if (const auto mask = static_cast<std::uint32_t>(file.mask); mask != 0 && !(mask & lit))
            findings.add(LedFinding::Level::DOUBT, file, "path",
                         "no row that runs lights " + hexOf(mask) + ": this LED is always dark");
}

/// Whether anything ends the roll. Rolls with the same first word and mask may end each other.
bool isEndedRoll(const LedRow& row, const LedRows& rows, bool hasStop) {
    return hasStop || rows.hasDefaultsLine() || rows.hasMate(row) ||
           rows.countRolls(row.word1, row.mask) > 1;
}

} // namespace

void checkLedLights(const LedSequencerProfile& tables, const LedRows& rows, LedFindings& findings) {
    checkUnlit(tables, rows, findings);
    bool hasOff = false;
    std::set<std::pair<std::string_view, std::uint32_t>> stops;
    for (const LedRow& row : tables.commands) {
        if (row.action == LedCtrl::ACTION_OFF && rows.runs(row))
            hasOff = true;
        if (row.action == LedCtrl::ACTION_ROLL_STOP && rows.runs(row) &&
            rows.countRolls(row.word1, row.mask) != 0)
            stops.insert({row.word1, row.mask});
    }
    if (!hasOff && stops.empty()) // the table is not meant to put LEDs out
        return;
    const std::uint32_t shown = shownLeds(tables);
    const StateEnds ends(tables, rows);
    for (const LedRow& row : tables.commands) {
        if (!rows.runs(row))
            continue;
        if (holdsState(row) && !rows.hasMate(row)) {
            const std::uint32_t ended =
                row.action == LedCtrl::ACTION_ON ? ends.ofSteady() : ends.ofBlinking();
            if (const std::uint32_t stuck = row.mask & shown & ~ended)
                findings.add(LedFinding::Level::DOUBT, row, "",
                             std::string("nothing ends this row: once it has run, ") +
                                 hexOf(stuck) +
                                 (row.action == LedCtrl::ACTION_ON ? " is lit" : " blinks") +
                                 " for good, though the table has rows that end others (expected "
                                 "an off, another row in its group or a time)");
        } else if (isEndlessRoll(row) && row.group > 0 && (row.mask & shown) != 0 &&
                   !isEndedRoll(row, rows, stops.count({row.word1, row.mask}) != 0)) {
            findings.add(LedFinding::Level::DOUBT, row, "",
                         "nothing ends this roll: once it has run, it goes on for good, though the "
                         "table has rows that end others (expected a roll-stop, another row in its "
                         "group or a time)");
        }
    }
}

} // namespace board
