#pragma once

#include <memory>
#include <string>
#include <utility>

#include "sysfs/Monitors.h"

namespace board {

/// Finds devices by name, because the kernel may number them differently at each boot.
class DeviceLocator {
public:
    /// `sysfs` is where the kernel's sysfs is mounted. Tests pass another folder.
    explicit DeviceLocator(std::string sysfs = "/sys") : m_sysfs(std::move(sysfs)) {}

    /// A locator for looking up many names at once. It reads the list of monitors only once, when
    /// it first looks up a monitor's name, so it does not see later changes. Only one thread may
    /// use it and its copies.
    DeviceLocator readingOnce() const;

    /// The path that `device` stands for:
    /// - "hwmon:NAME/FILE" is the file FILE of the hardware monitor whose `name` file holds NAME.
    ///   If the monitor has no such file, FILE may be a label: the text in the file `temp1_label`,
    ///   for example, means `temp1_input`.
    /// - "hwmon:NAME@BUSDEVICE/FILE" chooses among monitors with the same NAME.
    /// - "led:NAME" is the brightness file of that LED.
    /// - Anything else is a path and is returned unchanged.
    /// Throws Error if none or several match; the message lists what was found.
    std::string locate(const std::string& device) const;

    /// A name for a monitor's file that stays the same at each boot. BUSDEVICE is left out if NAME
    /// alone is enough. Returns the file's path if no name leads to the file.
    std::string nameOf(const Monitor& monitor, const std::string& file) const;

    const std::string& sysfs() const { return m_sysfs; }

private:
    class MonitorList;

    std::shared_ptr<const MonitorList> monitors() const;
    std::string locateMonitor(const std::string& device, const std::string& words) const;
    std::string locateLed(const std::string& device, const std::string& name) const;

    std::string m_sysfs;
    /// Null if the list of monitors is read for each name. Otherwise, this object and its copies
    /// share the list, which is null until it has been read.
    std::shared_ptr<std::shared_ptr<const MonitorList>> m_read;
};

/// The name "led:NAME" by which `locate` finds an LED.
std::string nameOfLed(const std::string& led);

} // namespace board
