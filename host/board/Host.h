#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CBoardDescr.h"
#include "CKernelDriver.h"
#include "CResourceVoip.h"
#include "TYPPtr.h"
#include "profile/Profile.h"
#include "sysfs/DeviceLocator.h"

namespace board {

class KernelEndpoint;

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
    std::string endpoint; ///< the kernel driver on the message channel; empty if there is none
    std::optional<std::string> fault; ///< why the device can't be used
};

/// The object graph of a host process: publishes an endpoint for each kernel driver of the profile,
/// makes and connects the drivers, and registers them with the process's repository, where clients
/// find them by name.
///
/// A device that can't be used does not affect the others. Its driver is registered anyway and
/// fails when it is used. The drivers point into this object, so it must outlive every reference to
/// them. One host at a time in a process. One thread.
class Host {
public:
    explicit Host(const Profile& profile, const DeviceLocator& locator = DeviceLocator());

    /// Takes the drivers out of the repository and closes them.
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// Sorted by kind, and within a kind as in the profile.
    const std::vector<Device>& devices() const { return m_devices; }

    /// Why the device of driver `name` can't be used; nothing if it can or is unknown.
    std::optional<std::string> faultOf(const std::string& name) const;

    /// The device file of driver `name`; empty if it was not found or is unknown.
    std::string pathOf(const std::string& name) const;

    /// The board descriptor, empty until its `readBD`; null if the profile has none.
    CBoardDescr* descriptor() const { return m_descriptor.get(); }

    /// The VoIP capacity, 0 until its `setup`; null if the profile has none.
    CResourceVoip* capacity() const { return m_capacity.get(); }

private:
    template <class Driver>
    void addKernelDriver(DeviceKind kind, const DeviceProfile& entry,
                         const std::optional<NamedPath>& enableFile, const DeviceLocator& locator,
                         std::vector<MxMsg> answers);
    void addDescriptor(const DescriptorProfile& profile, const DeviceLocator& locator);
    void addCapacity(const VoipProfile& profile);
    void loadPreferences(const NamedPath& file);
    void enroll(Device device, IDriver& driver);
    const Device* find(const std::string& name) const;

    std::vector<Device> m_devices;
    std::vector<String> m_registered;
    std::vector<std::unique_ptr<KernelEndpoint>> m_endpoints;
    std::vector<TYPPtr<CKernelDriver>> m_kernelDrivers;
    std::string m_descriptorPath; // the descriptor's driver keeps a pointer to it
    TYPPtr<CBoardDescr> m_descriptor;
    TYPPtr<CResourceVoip> m_capacity;
};

} // namespace board
