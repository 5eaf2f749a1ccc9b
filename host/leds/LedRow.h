#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "LedCtrl.h"
#include "profile/Profile.h"

namespace board {

/// A row of the command table in the profile's form. The templates below also accept the
/// sequencer's form, LedCtrl::CmdDef.
using LedRow = LedSequencerProfile::Command;

template <class Row>
bool isRoll(const Row& row) {
    return row.action == LedCtrl::ACTION_ROLL_UP || row.action == LedCtrl::ACTION_ROLL_DOWN;
}

/// Whether the row is a roll without a time limit.
template <class Row>
bool isEndlessRoll(const Row& row) {
    return isRoll(row) && row.timeMs == 0;
}

/// Whether the row turns its LEDs on or makes them blink without a time limit.
template <class Row>
bool holdsState(const Row& row) {
    return (row.action == LedCtrl::ACTION_ON || row.action == LedCtrl::ACTION_BLINK) &&
           row.timeMs == 0;
}

/// Whether the row starts or ends a state without a time limit.
template <class Row>
bool changesState(const Row& row) {
    return holdsState(row) || row.action == LedCtrl::ACTION_OFF;
}

/// Whether the row starts a roll, or lights its LEDs for a limited time.
template <class Row>
bool startsAction(const Row& row) {
    return isRoll(row) ||
           ((row.action == LedCtrl::ACTION_ON || row.action == LedCtrl::ACTION_BLINK) &&
            row.timeMs != 0);
}

/// Whether the row lights its LEDs in some way.
template <class Row>
bool isLighting(const Row& row) {
    return holdsState(row) || startsAction(row) || row.action == LedCtrl::ACTION_FLASH;
}

/// Whether the next row of its group will end what this row has started.
template <class Row>
bool leadsGroup(const Row& row) {
    return row.group > 0 && (holdsState(row) || startsAction(row));
}

/// The line that names the row, with its number: "line ring 0". If the row has no second word and
/// the number 0, the line is its first word alone, because a number after it would be read as the
/// second word.
template <class Row>
std::string lineOf(const Row& row) {
    std::string line(row.word1);
    if (!std::string_view(row.word2).empty() || row.number != 0) {
        line += ' ';
        line += row.word2;
        line += ' ';
        line += std::to_string(row.number);
    }
    return line;
}

/// The row in the sequencer's form. It points to the texts of `row`, which must outlive it.
LedCtrl::CmdDef definitionOf(const LedRow& row);

/// Whether a row of the table has these words and this number. A missing number means 0.
bool hasRow(const LedSequencerProfile& tables, const std::string& word1, const std::string& word2,
            std::optional<std::int32_t> number);

/// The LEDs that have a file, as a mask.
std::uint32_t shownLeds(const LedSequencerProfile& tables);

/// Calls `act` with the number of each bit in `mask`, from 0 to 31.
template <class Act>
void forEachLed(std::uint32_t mask, Act act) {
    for (unsigned led = 0; led < 32; ++led)
        if ((mask >> led & 1U) != 0)
            act(led);
}

} // namespace board
