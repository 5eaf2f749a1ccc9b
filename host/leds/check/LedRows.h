#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "leds/LedRow.h"

namespace board {

/// A mask for people, such as "0x1F".
std::string hexOf(std::uint32_t mask);

/// Which rows of a command table can run.
class LedRows {
public:
    /// The tables must outlive the object.
    explicit LedRows(const LedSequencerProfile& tables);

    /// Why no line can have the row's words; empty if a line can.
    static std::optional<std::string> whyUnsendable(const LedRow& row);
    /// The earlier row that a line with the row's words and number runs instead; null if there is
    /// none.
    const LedRow* formerOf(const LedRow& row) const;

    /// Whether a line runs the row.
    bool hasLine(const LedRow& row) const { return m_states[indexOf(row)].hasLine; }
    /// Whether a line or the start runs the row.
    bool runs(const LedRow& row) const { return hasLine(row) || row.isDefault; }
    /// Whether some line ends all rolls and timed rows.
    bool hasDefaultsLine() const { return m_hasDefaultsLine; }

    /// How many rolls have this first word and this mask.
    std::size_t countRolls(const std::string& word1, std::uint32_t mask) const;
    /// Whether the row is in a group with another row that can run.
    bool hasMate(const LedRow& row) const;

private:
    struct State {
        const LedRow* former;
        bool hasLine;
    };

    std::size_t indexOf(const LedRow& row) const {
        return static_cast<std::size_t>(&row - m_tables.commands.data());
    }

    const LedSequencerProfile& m_tables;
    std::vector<State> m_states; ///< one for each row
    bool m_hasDefaultsLine = false;
    std::map<std::pair<std::string_view, std::uint32_t>, std::size_t> m_rolls;
    std::map<std::int32_t, std::size_t> m_groups; ///< how many rows of each group can run
};

} // namespace board
