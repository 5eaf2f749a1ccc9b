#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "CBoardDescr.h"
#include "CResourceVoip.h"
#include "TYPPtr.h"
#include "base/File.h"
#include "devices/DriverConnection.h"
#include "profile/Profile.h"
#include "sysfs/DeviceLocator.h"

namespace board {

class HostedFan;

enum class DeviceKind { FAN, THERMAL, POWER, LED, DESCRIPTOR, VOIP, PREFERENCES };

/// The kind's table in a profile: "fan", "thermal", "power", "led", "descriptor", "voip",
/// "preferences".
const char* kindName(DeviceKind kind);

/// One of the board's devices, as the host found it.
struct Device {
    DeviceKind kind;
    std::string name; ///< the driver's name in the repository
    std::string description;
    std::string path;     ///< the device file; empty if it was not found
    std::string endpoint; ///< its kernel driver's name on the message channel; empty if none
    std::optional<std::string> fault; ///< why the device can't be used

    std::uint32_t maximum = 0;     ///< of a fan or a temperature sensor, from the profile
    std::uint32_t hysteresis = 0;  ///< of a sensor: an alarm ends this many degrees below `maximum`
    std::uint32_t on = 1;          ///< of an LED: the brightness that means lit
    bool biStatus = false;         ///< of an LED: has two lit states
    std::optional<NamedPath> tach; ///< of a fan: a file with its revolutions per minute
    std::string tachPath;          ///< the path of that file; empty if it was not found

    /// Which files were found at `path` and `tachPath`, if the profile names them by their class.
    std::optional<FileIdentity> identity, tachIdentity;
};

/// Which devices of a board a host opens.
struct DeviceChoice {
    std::optional<DeviceKind> kind; ///< empty: every kind
    std::string name;               ///< empty: every name

    bool includes(DeviceKind itsKind, const std::string& itsName) const {
        return (!kind || *kind == itsKind) && (name.empty() || name == itsName);
    }
};

/// The object graph of a host process: publishes an endpoint for each kernel driver of the profile,
/// makes and connects the drivers, and registers them with the process's repository, where clients
/// find them by name.
///
/// Only the devices of the choice are opened, and for reading only: nothing on the board changes
/// until somebody sets a device through its driver. The preferences are read if the choice includes
/// the VoIP capacity.
///
/// A device that can't be used does not affect the others. Its driver is registered anyway and
/// fails when it is used. The drivers point into this object, so it must outlive every reference to
/// them. One host at a time in a process. One thread.
class Host {
public:
    /// `profile` must outlive the object.
    explicit Host(const Profile& profile, const DeviceChoice& choice = {},
                  const DeviceLocator& locator = DeviceLocator());

    /// Takes the drivers out of the repository and closes them.
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// Sorted by kind, and within a kind as in the profile.
    const std::vector<Device>& devices() const { return m_devices; }

    /// Searches for a device again and connects its driver to the file that is found. A device that
    /// was missing, or that the kernel has created anew, can then be used. Clients keep their
    /// driver, because it remains the same object. This function holds the driver's lock while it
    /// connects the driver. An LED's driver keeps its overlays, and a fan's driver keeps the speed
    /// that was set. Does nothing if `name` is unknown, if another driver has this name in the
    /// repository, or if the driver has no device. The descriptor's driver can't change its path,
    /// so a descriptor without a usable path when this object was made remains unusable.
    void reconnect(const std::string& name);

    /// True if the profile names a file of the device by its class ("hwmon:...", "led:..."), and
    /// the path that was found for that file now leads to another file or to none. Does not search
    /// again.
    static bool hasMoved(const Device& device);

    /// Applies the profile's `on_exit` to each fan whose speed was set: restores the fan, keeps its
    /// speed or sets full speed. Returns the failures. A program calls this before it ends, unless
    /// the fans should keep their speeds.
    std::vector<std::string> giveBack() const;

    /// The device of driver `name`; null if it is unknown.
    const Device* find(const std::string& name) const;

    /// The driver of fan `name`; null if it is unknown.
    HostedFan* fan(const std::string& name) const;

    /// Finds the files that the profile names.
    const DeviceLocator& locator() const { return m_locator; }

    /// Why the device of driver `name` can't be used; empty if it can be used or `name` is unknown.
    std::optional<std::string> faultOf(const std::string& name) const;

    /// The board descriptor, which is empty until `readBD` is called; null if the profile has none.
    CBoardDescr* descriptor() const { return m_descriptor.get(); }

    ///@{
    /// Whether the descriptor has not been loaded yet because its device was locked for too long.
    /// Set by loadDescriptor; the watch then loads the descriptor when the lock is free.
    bool isDescriptorAwaited() const { return m_isDescriptorAwaited; }
    void awaitDescriptor(bool isAwaited) const { m_isDescriptorAwaited = isAwaited; }
    ///@}

    /// The VoIP capacity, which is 0 until `setup` is called; null if the profile has none.
    CResourceVoip* capacity() const { return m_capacity.get(); }

private:
    /// Where the parts of a device are.
    struct Place {
        std::size_t device;                    ///< index in `m_devices`
        std::optional<std::size_t> connection; ///< in `m_connections`; empty if there is none
        bool isRegistered;                     ///< its driver is the one in the repository
    };

    static void locate(Device& device, const DeviceProfile& entry, const DeviceLocator& locator);
    void connect(Device device, const DeviceProfile& entry, CKernelDriver* driver,
                 std::vector<MxMsg> answers);
    static void connect(DriverConnection& connection, Device& device);
    void addFan(const FanProfile& profile, const DeviceLocator& locator);
    void addThermal(const ThermalProfile& profile, const DeviceLocator& locator);
    void addPower(const PowerProfile& profile, const DeviceLocator& locator);
    void addLed(const LedDeviceProfile& profile, const DeviceLocator& locator);
    void addDescriptor(const DescriptorProfile& profile);
    void locateDescriptor(Device& device, const DescriptorProfile& profile);
    void addCapacity(const VoipProfile& profile);
    void loadPreferences(const NamedPath& file);
    void enroll(Device device, IDriver& driver, std::optional<std::size_t> connection = {});
    void append(Device device, Place place);

    const DeviceLocator m_locator;
    std::vector<Device> m_devices;
    std::unordered_map<std::string, Place> m_places; // by the device's name
    std::vector<String> m_registered;
    std::vector<DriverConnection> m_connections;
    std::vector<TYPPtr<HostedFan>> m_fans; // also among the connections
    std::unordered_map<std::string, HostedFan*> m_fansByName;
    const DescriptorProfile* m_descriptorProfile = nullptr;
    std::string m_descriptorPath; // the descriptor's driver keeps a pointer to it
    TYPPtr<CBoardDescr> m_descriptor;
    mutable std::atomic<bool> m_isDescriptorAwaited{false};
    TYPPtr<CResourceVoip> m_capacity;
};

} // namespace board
