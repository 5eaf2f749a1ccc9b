#include "devices/HostedFan.h"

#include <cerrno>
#include <utility>

#include "base/File.h"
#include "devices/DeviceValue.h"

namespace board {

namespace {

Result<void> putBackSpeed(const std::string& path, const Result<std::string>& found) {
    if (!found)
        return Fault{"the previous speed is not known: " + found.fault()};
    return writeContent(path, *found);
}

} // namespace

HostedFan::HostedFan(IDriverRepository* repository, const String& endpoint,
                     const FanProfile& profile, std::string path, DeviceLocator locator)
    : CFanControl(repository, profile.name.c_str(), endpoint), m_profile(profile),
      m_path(std::move(path)), m_locator(std::move(locator)) {}

template <class Use>
Result<void> HostedFan::withModeFile(Use use) const {
    return withNamedFile(*m_profile.enable, m_locator, use);
}

/// Looks the device up again, because its old path may now lead to another device.
template <class Use>
Result<void> HostedFan::withDeviceFile(Use use) const {
    return withNamedFile(m_profile.device, m_locator, use);
}

XCode HostedFan::setFanSpeed(FanSpeed speed) {
    m_fault.reset();
    const Result<void> isThere = withDeviceFile([&](const std::string& path) -> Result<void> {
        if (path == m_path)
            return {};
        return Fault{"the device has moved from " + m_path + " to " + path + " (try again later)"};
    });
    if (isValid() && !isThere) {
        m_fault = isThere.fault();
        return XCode(XCode::FAILURE);
    }
    if (!m_isManual && isValid()) {
        const Result<void> taken = takeOver();
        if (!taken) {
            m_fault = taken.fault();
            return XCode(XCode::FAILURE);
        }
    }
    XCode status = CFanControl::setFanSpeed(speed);
    if (status.isSuccess())
        m_inForce = speed;
    return status;
}

std::uint32_t HostedFan::levelOf(FanSpeed speed) const {
    const std::uint32_t third = m_profile.maximum / 3;
    switch (speed) {
    case FAN_SPEED_OFF:
        return 0;
    case FAN_SPEED_LOW:
        return third;
    case FAN_SPEED_HIGH:
        return 2 * third;
    case FAN_SPEED_FULL:
        break;
    }
    return m_profile.maximum;
}

void HostedFan::moveTo(std::string path) {
    m_path = std::move(path);
    m_isManual = false;
}

Result<void> HostedFan::takeOver() {
    Found found{readContent(m_path), std::nullopt};
    if (m_profile.enable) {
        Result<void> written = withModeFile([&](const std::string& path) -> Result<void> {
            const Result<std::string> held = readContent(path);
            if (!held)
                return Fault{held.fault()};
            found.mode = *held;
            return writeContent(path, std::to_string(m_profile.manual) + "\n");
        });
        if (!written)
            return written;
    }
    if (!m_found)
        m_found = std::move(found);
    m_isManual = true;
    return {};
}

Result<void> HostedFan::setAutomatic() {
    if (!m_profile.enable)
        return Fault{"the profile names no file that selects automatic control (expected the key "
                     "enable)"};
    m_isManual = false;
    m_inForce.reset();
    return withModeFile([&](const std::string& path) -> Result<void> {
        const auto wanted = static_cast<std::int32_t>(m_profile.automatic);
        Result<void> written = writeContent(path, std::to_string(wanted) + "\n");
        if (!written)
            return written;
        const Result<std::int32_t> held = readFanMode(path);
        if (!held)
            return Fault{held.fault()};
        if (*held != wanted)
            return Fault{path + ": holds " + std::to_string(*held) + " after " +
                         std::to_string(wanted) + " was written"};
        return {};
    });
}

Result<void> HostedFan::giveBack() {
    if (!m_found)
        return {};
    const Found found = *std::exchange(m_found, std::nullopt);
    m_isManual = false;
    m_inForce.reset();
    switch (m_profile.onExit) {
    case FanProfile::OnExit::KEEP:
        return {};
    case FanProfile::OnExit::FULL:
        return withDeviceFile([&](const std::string& path) -> Result<void> {
            if (path != m_path)
                return writeContent(path, std::to_string(m_profile.maximum) + "\n");
            errno = 0; // the driver ignores the result of its write, so errno is checked below
            if (!CFanControl::setFanSpeed(FAN_SPEED_FULL).isSuccess() || errno != 0)
                return Fault{m_path + ": can't write: " + reasonOf(errno)};
            return {};
        });
    case FanProfile::OnExit::RESTORE:
        return restore(found);
    }
    return {};
}

/// The speed comes first: some chips accept a speed only while they are under manual control.
Result<void> HostedFan::restore(const Found& found) const {
    const Result<void> speed =
        withDeviceFile([&](const std::string& path) { return putBackSpeed(path, found.speed); });
    const Result<void> mode =
        found.mode
            ? withModeFile([&](const std::string& path) { return writeContent(path, *found.mode); })
            : Result<void>();
    if (!speed && !mode)
        return Fault{speed.fault() + "; " + mode.fault()};
    return speed ? mode : speed;
}

} // namespace board
