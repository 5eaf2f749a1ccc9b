#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CBoardDescr.h"
#include "CKernelDriver.h"
#include "CResourceVoip.h"
#include "TYPPtr.h"
#include "profile/DeviceLocator.h"
#include "profile/Profile.h"

namespace board {

class KernelEndpoint;

/// What became of one of the board's devices.
struct Device {
    std::string kind; ///< "fan", "thermal", "power", "led", "descriptor", "voip", "preferences"
    std::string name; ///< the driver's name in the repository
    std::string description;
    std::string path; ///< the device file; empty where it was not found
    std::string
        endpoint; ///< the kernel driver on the message channel; empty where none stands behind it
    std::string fault; ///< why the device can't be used; empty where it can
};

/// The object graph of a host process: publishes an endpoint for each kernel driver of the profile,
/// makes and connects the drivers, and registers them with the process's repository, where clients
/// find them by name.
///
/// A device that can't be had is a fault of its own and stops nothing else; its driver is
/// registered all the same and fails when it is used. The drivers point into this object: it must
/// outlive every reference to them. One host at a time in a process. Used by one thread.
class Host {
public:
    explicit Host(const Profile& profile, const DeviceLocator& locator = DeviceLocator());

    /// Takes the drivers out of the repository and closes them.
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// Kind by kind: fans, sensors, power, LEDs, and then what stands behind no kernel driver.
    const std::vector<Device>& devices() const { return m_devices; }

    /// Why the device behind driver `name` can't be used; empty where it can or is unknown.
    std::string faultOf(const std::string& name) const;

    /// The device file of driver `name`; empty where it was not found or is unknown.
    std::string pathOf(const std::string& name) const;

    /// The board descriptor, empty until its `readBD`; null where the profile names none.
    CBoardDescr* descriptor() const { return m_descriptor.get(); }

    /// The VoIP capacity, 0 until its `setup`; null where the profile says nothing of it.
    CResourceVoip* capacity() const { return m_capacity.get(); }

private:
    template <class Driver>
    void addKernelDriver(const char* kind, const DeviceProfile& entry,
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
    std::string m_descriptorPath; // kept by pointer in the descriptor's driver
    TYPPtr<CBoardDescr> m_descriptor;
    TYPPtr<CResourceVoip> m_capacity;
};

} // namespace board
