#include "board/Host.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>

#include "CFanControl.h"
#include "CLedControl.h"
#include "CPowerStatus.h"
#include "CThermalSensor.h"
#include "DRIVER.h"
#include "IDriverRepository.h"
#include "PREFERENCES.h"
#include "base/Error.h"
#include "base/File.h"
#include "descriptor/DescriptorSource.h"
#include "devices/KernelEndpoint.h"

namespace board {

namespace {

/// Takes a fan off automatic control, on boards that need that before the fan obeys.
void enable(const std::string& path) {
    constexpr char WHAT[] = "can't enable";
    const FileDescriptor file = openFile(path, O_WRONLY | O_NONBLOCK, WHAT);
    if (tryWrite(file, "1", 1) != 1)
        failWith(path, WHAT, errno);
}

/// Rejects a file that would block a reader, such as a pipe: a driver must not hang in its first
/// open. A missing file is left to the driver.
void expectDeviceFile(const std::string& path) {
    const FileKind kind = kindOf(path);
    const bool isAllowed = kind == FileKind::MISSING || kind == FileKind::REGULAR ||
                           kind == FileKind::BLOCK_DEVICE || kind == FileKind::CHARACTER_DEVICE;
    if (!isAllowed)
        throw Error(path + ": is not a device file (expected a file or a device)");
}

/// The board's VoIP capacity with the default that its profile gives.
class Capacity : public CResourceVoip {
public:
    explicit Capacity(const VoipProfile& profile)
        : CResourceVoip(profile.borderController), m_defaultSipLegs(profile.defaultSipLegs) {}
    unsigned getDefaultSipLegs() override { return m_defaultSipLegs; }

private:
    const unsigned m_defaultSipLegs;
};

String endpointOf(const std::string& driverName) {
    return String::format("kernel.%s", driverName.c_str());
}

} // namespace

const char* kindName(DeviceKind kind) {
    switch (kind) {
    case DeviceKind::FAN:
        return "fan";
    case DeviceKind::THERMAL:
        return "thermal";
    case DeviceKind::POWER:
        return "power";
    case DeviceKind::LED:
        return "led";
    case DeviceKind::DESCRIPTOR:
        return "descriptor";
    case DeviceKind::VOIP:
        return "voip";
    case DeviceKind::PREFERENCES:
        return "preferences";
    }
    return "device";
}

Host::Host(const Profile& profile, const DeviceLocator& locator) {
    for (const FanProfile& fan : profile.fans)
        addKernelDriver<CFanControl>(DeviceKind::FAN, fan, fan.enable, locator,
                                     {answer(MSG_GET_MAXIMUM, fan.maximum)});
    for (const ThermalProfile& sensor : profile.thermals)
        addKernelDriver<CThermalSensor>(DeviceKind::THERMAL, sensor, {}, locator,
                                        {answer(MSG_GET_MAXIMUM, sensor.maximum)});
    for (const PowerProfile& power : profile.powers)
        addKernelDriver<CPowerStatus>(DeviceKind::POWER, power, {}, locator, {});
    for (const LedDeviceProfile& led : profile.leds)
        addKernelDriver<CLedControl>(DeviceKind::LED, led, {}, locator,
                                     {answer(MSG_GET_BI_STATUS, led.biStatus)});
    if (profile.descriptor)
        addDescriptor(*profile.descriptor, locator);
    PREFERENCES::CLEAR(); // the process has one store: an earlier board may have filled it
    if (profile.preferences)
        loadPreferences(*profile.preferences);
    if (profile.voip)
        addCapacity(*profile.voip);
}

Host::~Host() {
    for (const String& name : m_registered)
        static_cast<void>(DRIVER::INSTANCE()->unregisterDriver(name));
    for (const TYPPtr<CKernelDriver>& driver : m_kernelDrivers)
        driver->close();
}

const Device* Host::find(const std::string& name) const {
    const auto found = std::find_if(m_devices.begin(), m_devices.end(),
                                    [&](const Device& device) { return device.name == name; });
    return found != m_devices.end() ? &*found : nullptr;
}

std::optional<std::string> Host::faultOf(const std::string& name) const {
    const Device* const device = find(name);
    return device ? device->fault : std::nullopt;
}

std::string Host::pathOf(const std::string& name) const {
    const Device* const device = find(name);
    return device ? device->path : std::string();
}

template <class Driver>
void Host::addKernelDriver(DeviceKind kind, const DeviceProfile& entry,
                           const std::optional<NamedPath>& enableFile, const DeviceLocator& locator,
                           std::vector<MxMsg> answers) {
    const String endpoint = endpointOf(entry.name);
    Device device{kind, entry.name, entry.description, "", endpoint.c_str(), std::nullopt};
    const auto driver =
        TYPPtr<CKernelDriver>::adopt(new Driver(DRIVER::INSTANCE(), entry.name.c_str(), endpoint));
    try {
        withPlaceInErrors(entry.device, [&](const std::string& named) {
            device.path = locator.locate(named);
            expectDeviceFile(device.path);
            expectReadable(device.path);
        });
        if (enableFile)
            withPlaceInErrors(*enableFile, [&](const std::string& named) {
                const std::string path = locator.locate(named);
                expectDeviceFile(path);
                enable(path);
            });
        withPlaceInErrors(entry.device, [&](const std::string&) {
            answers.push_back(answer(MSG_GET_FILE_PATH, device.path.c_str()));
            answers.push_back(answer(MSG_GET_DESCRIPTION, entry.description.c_str()));
            m_endpoints.push_back(std::make_unique<KernelEndpoint>(endpoint, answers));
            String message = "the kernel driver can't be connected";
            if (!driver->open(message).isSuccess())
                throw Error(message.c_str());
        });
    } catch (const Error& error) {
        device.fault = error.what();
    }
    m_kernelDrivers.push_back(driver);
    enroll(std::move(device), *driver);
}

void Host::addDescriptor(const DescriptorProfile& profile, const DeviceLocator& locator) {
    Device device{DeviceKind::DESCRIPTOR, DESCRIPTOR_DRIVER, "", "", "", std::nullopt};
    try {
        withPlaceInErrors(profile.device, [&](const std::string& named) {
            device.path = locator.locate(named);
            expectDescriptorDevice(device.path);
            m_descriptorPath = device.path;
            expectReadable(device.path);
        });
    } catch (const Error& error) {
        device.fault = error.what();
    }
    m_descriptor = TYPPtr<CBoardDescr>::adopt(
        m_descriptorPath.empty()
            ? new CBoardDescr
            : new CBoardDescr(m_descriptorPath.c_str(), profile.readChunk, profile.size));
    enroll(std::move(device), *m_descriptor);
}

void Host::addCapacity(const VoipProfile& profile) {
    m_capacity = TYPPtr<CResourceVoip>::adopt(new Capacity(profile));
    enroll({DeviceKind::VOIP, CAPACITY_DRIVER, "", "", "", std::nullopt}, *m_capacity);
}

void Host::loadPreferences(const NamedPath& file) {
    Device device{DeviceKind::PREFERENCES, "preferences", "", file.path, "", std::nullopt};
    try {
        withPlaceInErrors(file, [](const std::string& path) {
            const FileKind kind = kindOf(path);
            if (kind != FileKind::MISSING && kind != FileKind::REGULAR)
                throw Error(path + ": is not a file (expected lines 'key = value')");
            String error;
            if (!PREFERENCES::LOAD(path.c_str(), error).isSuccess())
                throw Error(error.c_str());
        });
    } catch (const Error& error) {
        device.fault = error.what();
    }
    m_devices.push_back(std::move(device));
}

void Host::enroll(Device device, IDriver& driver) {
    const XCode status = DRIVER::INSTANCE()->registerDriver(&driver);
    if (status.isSuccess())
        m_registered.push_back(driver.getDriverName());
    else if (!device.fault)
        device.fault = status.getMessage().c_str();
    m_devices.push_back(std::move(device));
}

} // namespace board
