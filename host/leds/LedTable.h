#pragma once

#include <string>
#include <vector>

#include "LedCtrl.h"
#include "profile/DeviceLocator.h"
#include "profile/Profile.h"

namespace board {

/// A LED of the board as its sequencer knows it.
struct Led {
    std::uint32_t mask;
    std::string name; ///< for people, from its file
    std::string path; ///< empty where its file was not found
};

/// The tables of a profile as the LED sequencer takes them. They point into the profile and into
/// this object, which both must outlive the sequencer.
class LedTable {
public:
    /// Finds the files' paths; a file that is not found is left out.
    explicit LedTable(const LedSequencerProfile& profile,
                      const DeviceLocator& locator = DeviceLocator());
    LedTable(const LedTable&) = delete;
    LedTable& operator=(const LedTable&) = delete;

    const std::vector<LedCtrl::CmdDef>& commands() const { return m_commands; }
    const std::vector<LedCtrl::FileNameMap>& files() const { return m_files; }

    /// The LEDs that are shown, in ascending order of their masks: of several files with one mask
    /// the last.
    const std::vector<Led>& leds() const { return m_leds; }

    /// Which files were not found and why, each with its place in the profile.
    const std::vector<std::string>& faults() const { return m_faults; }

private:
    std::vector<LedCtrl::CmdDef> m_commands;
    std::vector<LedCtrl::FileNameMap> m_files;
    std::vector<Led> m_leds;
    std::vector<std::string> m_faults;
};

/// What people call a LED: the name of its file, or of the folder where the file is a "brightness".
std::string ledNameOf(const std::string& path);

} // namespace board
