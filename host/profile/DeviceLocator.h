#pragma once

#include <string>
#include <utility>

namespace board {

/// Finds devices by name, because the kernel may number them differently at each boot.
class DeviceLocator {
public:
    /// `sysfs` is where the kernel's device tree is mounted. Tests pass another folder.
    explicit DeviceLocator(std::string sysfs = "/sys") : m_sysfs(std::move(sysfs)) {}

    /// The path that `device` stands for. "hwmon:NAME/FILE" is the file FILE of the hardware
    /// monitor whose `name` file holds NAME; "led:NAME" is the brightness file of that LED;
    /// anything else is a path and is returned unchanged. Throws Error, listing what was found
    /// instead, if none or several match.
    std::string locate(const std::string& device) const;

private:
    std::string locateMonitor(const std::string& device, const std::string& words) const;
    std::string locateLed(const std::string& device, const std::string& name) const;

    std::string m_sysfs;
};

} // namespace board
