#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/Result.h"
#include "profile/Profile.h"
#include "profile/ProfileError.h"
#include "sysfs/DeviceLocator.h"

namespace board {

/// One thing that is wrong with a board's profile, or with a device that it names.
struct BoardFinding {
    enum class Level {
        ERROR,  ///< it does not work
        WARNING ///< it works, but probably not as intended
    };
    Level level;
    ProfileFault fault;
};

/// Checks whether a host could use the devices that a profile names: each must exist, be the right
/// kind of file, be readable, hold a value that such a device can have, and be writable if a host
/// writes to it. In LED tables and their files, reports mistakes but nothing that is only doubtful.
/// Writes nothing and opens nothing for writing. Reads the list of hardware monitors once.
class BoardCheck {
public:
    explicit BoardCheck(const DeviceLocator& locator = DeviceLocator())
        : m_locator(locator.readingOnce()) {}

    /// Checks everything in a profile: the devices and files, the LED tables and what the
    /// descriptor's device holds. Empties the process's preferences, so no host may exist
    /// meanwhile.
    void check(const Profile& profile);

    void check(const FanProfile& fan);
    void check(const ThermalProfile& sensor);
    void check(const PowerProfile& power);
    void check(const LedDeviceProfile& led);
    void check(const DescriptorProfile& descriptor);

    /// What all checks so far have found, in their order.
    const std::vector<BoardFinding>& findings() const { return m_findings; }

private:
    using Level = BoardFinding::Level;

    void add(Level level, const NamedPath& entry, const std::string& what);
    template <class Look>
    void look(const NamedPath& entry, Look look);
    std::optional<std::string> deviceOf(const NamedPath& entry);
    template <class Value>
    void expectValue(const NamedPath& entry, const Result<Value>& value);
    void expectRange(const LedDeviceProfile& led, const std::string& path);
    void checkLedTables(const Profile& profile);
    void checkWatch(const Profile& profile);
    void checkPreferences(const NamedPath& file);
    void checkButton(const NamedPath& button);

    const DeviceLocator m_locator;
    std::vector<BoardFinding> m_findings;
};

} // namespace board
