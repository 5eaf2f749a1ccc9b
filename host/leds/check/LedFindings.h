#pragma once

#include <string>
#include <vector>

#include "profile/Profile.h"
#include "profile/ProfileError.h"

namespace board {

/// One finding about LED tables, or about a file that they name.
struct LedFinding {
    enum class Level {
        MISTAKE, ///< nobody can want what the LEDs do
        DOUBT    ///< probably not what was intended
    };
    Level level;
    ProfileFault fault;
};

/// Collects findings in the order of the profile, whatever the order in which they are added.
class LedFindings {
public:
    using Level = LedFinding::Level;

    /// The tables must outlive the object.
    explicit LedFindings(const LedSequencerProfile& tables);

    /// About the table [leds] itself.
    void add(Level level, const std::string& key, const std::string& what);
    /// About a key of an entry of `tables.files`.
    void add(Level level, const LedSequencerProfile::File& file, const std::string& key,
             const std::string& what);
    /// About an entry of `tables.commands`; an empty key means the whole row.
    void add(Level level, const LedSequencerProfile::Command& row, const std::string& key,
             const std::string& what);

    std::vector<LedFinding> take();

private:
    using List = std::vector<LedFinding>;

    const LedSequencerProfile& m_tables;
    List m_general;
    std::vector<List> m_files, m_rows; ///< one for each entry
};

} // namespace board
