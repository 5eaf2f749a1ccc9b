#include "leds/check/LedFindings.h"

#include <iterator>

namespace board {

LedFindings::LedFindings(const LedSequencerProfile& tables)
    : m_tables(tables), m_files(tables.files.size()), m_rows(tables.commands.size()) {}

void LedFindings::add(Level level, const std::string& key, const std::string& what) {
    m_general.push_back({level, {m_tables.place + "." + key, what}});
}

void LedFindings::add(Level level, const LedSequencerProfile::File& file, const std::string& key,
                      const std::string& what) {
    const auto index = static_cast<std::size_t>(&file - m_tables.files.data());
    m_files[index].push_back(
        {level, {key == "path" ? file.path.place : file.place + "." + key, what}});
}

void LedFindings::add(Level level, const LedSequencerProfile::Command& row, const std::string& key,
                      const std::string& what) {
    const auto index = static_cast<std::size_t>(&row - m_tables.commands.data());
    m_rows[index].push_back({level, {key.empty() ? row.place : row.place + "." + key, what}});
}

std::vector<LedFinding> LedFindings::take() {
    List all = std::move(m_general);
    for (auto* const lists : {&m_files, &m_rows})
        for (List& list : *lists)
            std::move(list.begin(), list.end(), std::back_inserter(all));
    return all;
}

} // namespace board
