#include "leds/check/LedRows.h"

#include <stdexcept>
#include <tuple>

#include "LedCtrl.h"
#include "String.h"
#include "leds/LedLine.h"

namespace board {

std::string hexOf(std::uint32_t mask) {
    return String::format("0x%X", mask).c_str();
}

LedRows::LedRows(const LedSequencerProfile& tables) : m_tables(tables) {
    std::map<std::tuple<std::string_view, std::string_view, std::int32_t>, const LedRow*> first;
    for (const LedRow& row : tables.commands) {
        const auto [former, isNew] = first.insert({{row.word1, row.word2, row.number}, &row});
        m_states.push_back({isNew ? nullptr : former->second, isNew && !whyUnsendable(row)});
        if (m_states.back().hasLine && row.action == LedCtrl::ACTION_DEFAULTS)
            m_hasDefaultsLine = true;
        if (isRoll(row))
            ++m_rolls[{row.word1, row.mask}];
    }
    for (const LedRow& row : tables.commands)
        if (row.group > 0 && runs(row))
            ++m_groups[row.group];
}

std::optional<std::string> LedRows::whyUnsendable(const LedRow& row) {
    try {
        // A line may end before its second word or have no word at all.
        const bool isShort = row.word2.empty() && row.number == 0;
        if (!isShort)
            static_cast<void>(ledLine(row.word1, row.word2, row.number));
        else if (!row.word1.empty())
            static_cast<void>(ledLine(row.word1, "x", {}));
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return std::nullopt;
}

const LedRow* LedRows::formerOf(const LedRow& row) const {
    return m_states[indexOf(row)].former;
}

std::size_t LedRows::countRolls(const std::string& word1, std::uint32_t mask) const {
    const auto found = m_rolls.find({word1, mask});
    return found == m_rolls.end() ? 0 : found->second;
}

bool LedRows::hasMate(const LedRow& row) const {
    const auto found = m_groups.find(row.group);
    return found != m_groups.end() && found->second > (runs(row) ? 1U : 0U);
}

} // namespace board
