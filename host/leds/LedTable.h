#pragma once

#include <string>
#include <vector>

#include "LedCtrl.h"
#include "profile/Profile.h"
#include "sysfs/DeviceLocator.h"

namespace board {

/// An LED of the board as the sequencer drives it.
struct Led {
    std::uint32_t mask;
    std::string name;       ///< for people: from the profile, or else from its file's path
    std::string path;       ///< empty if its file was not found and can't appear later
    unsigned on = 1;        ///< the brightness that means lit
    std::string fault = {}; ///< why its file was not found, if it can appear later
    LedColor color = LedColor::UNKNOWN;
};

/// A profile's tables in the form that the LED sequencer needs. They point into the profile and
/// into this object; both must outlive the sequencer.
class LedTable {
public:
    /// Looks up the paths of the files. A file that is not found is left out, unless it is a kernel
    /// LED's file, whose driver may be loaded later.
    explicit LedTable(const LedSequencerProfile& profile,
                      const DeviceLocator& locator = DeviceLocator());
    LedTable(const LedTable&) = delete;
    LedTable& operator=(const LedTable&) = delete;

    const std::vector<LedCtrl::CmdDef>& commands() const { return m_commands; }
    const std::vector<LedCtrl::FileNameMap>& files() const { return m_files; }

    /// The LEDs in ascending order of their masks. If several files have the same mask, the last
    /// one counts.
    const std::vector<Led>& leds() const { return m_leds; }

    /// Which files were not found and are left out, and why, each with its place in the profile.
    const std::vector<std::string>& faults() const { return m_faults; }

private:
    std::vector<LedCtrl::CmdDef> m_commands;
    std::vector<LedCtrl::FileNameMap> m_files;
    std::vector<Led> m_leds;
    std::vector<std::string> m_faults;
};

/// An LED's name for people: its file's name, or its folder's name if the file is "brightness".
std::string ledNameOf(const std::string& path);

/// The brightness file of the LED that `device` names as "led:NAME", whether or not the file
/// exists. Empty if `device` has another form.
std::string kernelFileOf(const std::string& device, const DeviceLocator& locator = DeviceLocator());

} // namespace board
