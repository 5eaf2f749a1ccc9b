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

    /// Sets the speed as the base does. Before the first speed, remembers what the device and the
    /// mode file hold, and writes the number for manual control. Fails if the mode file can't be
    /// read or written, because a mode that is not known could not be restored. Also fails if the
    /// device has moved since `moveTo`, because the path may now lead to another device. After such
    /// a failure, nothing is set, the request is not remembered, and `fault` says why.
    XCode setFanSpeed(FanSpeed speed) override;

    /// Why the last `setFanSpeed` failed before it reached the device; empty otherwise.
    const std::optional<std::string>& fault() const { return m_fault; }

    /// The speed that was set last; empty once `setAutomatic` or `giveBack` has ended it. The
    /// device may hold another speed.
    const std::optional<FanSpeed>& speedInForce() const { return m_inForce; }

    /// What the driver writes to the device for `speed`.
    std::uint32_t levelOf(FanSpeed speed) const;

    /// Call it when the kernel has created the device again, at `path`. The new device may be under
    /// automatic control; the next speed that is set takes it off again.
    void moveTo(std::string path);

    /// Puts the fan under automatic control and reads the mode back to check that. The next speed
    /// that is set takes the fan off again.
    Result<void> setAutomatic();

    /// Applies the profile's setting for the end of a host. Does nothing unless a speed has been
    /// set since construction or the last call. A fault names everything that failed.
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
