#include "leds/LedRow.h"

#include <algorithm>

namespace board {

LedCtrl::CmdDef definitionOf(const LedRow& row) {
    return {row.word1.c_str(), row.word2.c_str(), row.number, row.mask,
            row.action,        row.group,         row.timeMs, row.isDefault};
}

bool hasRow(const LedSequencerProfile& tables, const std::string& word1, const std::string& word2,
            std::optional<std::int32_t> number) {
    return std::any_of(tables.commands.begin(), tables.commands.end(), [&](const LedRow& row) {
        return row.word1 == word1 && row.word2 == word2 && row.number == number.value_or(0);
    });
}

std::uint32_t shownLeds(const LedSequencerProfile& tables) {
    std::uint32_t shown = 0;
    for (const LedSequencerProfile::File& file : tables.files)
        shown |= static_cast<std::uint32_t>(file.mask);
    return shown;
}

} // namespace board
