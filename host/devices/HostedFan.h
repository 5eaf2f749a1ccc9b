#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "CFanControl.h"
#include "base/Result.h"
#include "profile/Profile.h"
#include "sysfs/DeviceLocator.h"

namespace board {

/// The driver of a fan on a hosted board. It takes the fan off automatic control just before it
/// sets a speed for the first time, and can give the fan back as it was. Reading changes nothing.
class HostedFan : public CFanControl {
public:
    /// `profile` must outlive the object. `path` is the fan's device file.
    HostedFan(IDriverRepository* repository, const String& endpoint, const FanProfile& profile,
              std::string path, DeviceLocator locator);

    /// As in the base, except for the first speed: before it, remembers what the device and the
    /// mode file hold, and writes the number for manual control. If the mode file can't be read or
    /// written, nothing is set, the request is not remembered, and `fault` says why: a mode that is
    /// not known could not be given back. It is the same if the device has moved since `moveTo`: by
    /// now, the path may be that of another one.
    XCode setFanSpeed(FanSpeed speed) override;

    /// Why the last `setFanSpeed` failed before it reached the device; empty otherwise.
    const std::optional<std::string>& fault() const { return m_fault; }

    /// The speed that was set last, as long as it is in force: neither `setAutomatic` nor
    /// `giveBack` has ended it. The device may hold another.
    const std::optional<FanSpeed>& speedInForce() const { return m_inForce; }

    /// What the driver writes to the device for `speed`.
    std::uint32_t levelOf(FanSpeed speed) const;

    /// From now on the device file is `path`: the kernel has made the device anew, and may have
    /// made it automatic. The next speed that is set takes it off automatic control again.
    void moveTo(std::string path);

    /// Puts the fan under automatic control and reads back that it is. The next speed that is set
    /// takes it off again.
    Result<void> setAutomatic();

    /// What the profile asks for at the end of a host. Does nothing unless a speed has been set
    /// since construction or the last call. A fault tells everything that could not be done.
    Result<void> giveBack();

private:
    /// What the files held before the first speed was set.
    struct Found {
        Result<std::string> speed;
        std::optional<std::string> mode; ///< empty if the profile names no mode file
    };

    template <class Use>
    Result<void> withModeFile(Use use) const;
    template <class Use>
    Result<void> withDeviceFile(Use use) const;
    Result<void> takeOver();
    Result<void> restore(const Found& found) const;

    const FanProfile& m_profile;
    std::string m_path;
    const DeviceLocator m_locator;
    std::optional<Found> m_found;
    bool m_isManual = false;
    std::optional<FanSpeed> m_inForce;
    std::optional<std::string> m_fault;
};

} // namespace board
