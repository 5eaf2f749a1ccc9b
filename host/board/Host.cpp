#include "board/Host.h"

#include <algorithm>

#include <fcntl.h>

#include "CLedControl.h"
#include "CPowerStatus.h"
#include "CThermalSensor.h"
#include "DRIVER.h"
#include "IDriverRepository.h"
#include "PREFERENCES.h"
#include "base/EndingSignals.h"
#include "base/Error.h"
#include "base/File.h"
#include "descriptor/DescriptorSource.h"
#include "devices/HostedFan.h"
#include "devices/KernelEndpoint.h"

namespace board {

namespace {

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

Host::Host(const Profile& profile, const DeviceChoice& choice, const DeviceLocator& locator)
    : m_locator(locator) {
    for (const FanProfile& fan : profile.fans)
        if (choice.includes(DeviceKind::FAN, fan.name))
            addFan(fan);
    for (const ThermalProfile& sensor : profile.thermals)
        if (choice.includes(DeviceKind::THERMAL, sensor.name))
            addThermal(sensor);
    for (const PowerProfile& power : profile.powers)
        if (choice.includes(DeviceKind::POWER, power.name))
            addPower(power);
    for (const LedDeviceProfile& led : profile.leds)
        if (choice.includes(DeviceKind::LED, led.name))
            addLed(led);
    if (profile.descriptor && choice.includes(DeviceKind::DESCRIPTOR, DESCRIPTOR_DRIVER))
        addDescriptor(*profile.descriptor);
    PREFERENCES::CLEAR(); // the process has one store: an earlier board may have filled it
    if (profile.voip && choice.includes(DeviceKind::VOIP, CAPACITY_DRIVER)) {
        if (profile.preferences)
            loadPreferences(*profile.preferences);
        addCapacity(*profile.voip);
    }
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

HostedFan* Host::fan(const std::string& name) const {
    const auto found =
        std::find_if(m_fans.begin(), m_fans.end(), [&](const TYPPtr<HostedFan>& each) {
            return each->getDriverName() == String(name.c_str());
        });
    return found != m_fans.end() ? &**found : nullptr;
}

std::vector<std::string> Host::giveBack() const {
    std::vector<std::string> faults;
    const EndingSignalsHeld whileRestoring;
    for (const TYPPtr<HostedFan>& fan : m_fans) {
        const auto hold = fan.getLock();
        const Result<void> given = fan->giveBack();
        if (!given)
            faults.push_back(std::string("fan '") + fan->getDriverName().c_str() +
                             "': can't be given back: " + given.fault());
    }
    return faults;
}

Device Host::locate(DeviceKind kind, const DeviceProfile& entry) const {
    Device device{};
    device.kind = kind;
    device.name = entry.name;
    device.description = entry.description;
    device.endpoint = endpointOf(entry.name).c_str();
    try {
        withPlaceInErrors(entry.device, [&](const std::string& named) {
            device.path = m_locator.locate(named);
            expectDeviceFile(device.path);
        });
    } catch (const Error& error) {
        device.fault = error.what();
    }
    return device;
}

void Host::connect(Device device, const DeviceProfile& entry, CKernelDriver* driver,
                   std::vector<MxMsg> answers) {
    m_kernelDrivers.push_back(TYPPtr<CKernelDriver>::adopt(driver));
    try {
        withPlaceInErrors(entry.device, [&](const std::string&) {
            if (device.fault)
                return;
            answers.push_back(answer(MSG_GET_FILE_PATH, device.path.c_str()));
            answers.push_back(answer(MSG_GET_DESCRIPTION, entry.description.c_str()));
            m_endpoints.push_back(
                std::make_unique<KernelEndpoint>(endpointOf(entry.name), answers));
            String message = "the kernel driver can't be connected";
            if (driver->open(message).isSuccess())
                return;
            openFile(device.path, O_RDONLY | O_NONBLOCK); // throws the system's reason
            throw Error(message.c_str());
        });
    } catch (const Error& error) {
        device.fault = error.what();
    }
    enroll(std::move(device), *driver);
}

void Host::addFan(const FanProfile& profile) {
    Device device = locate(DeviceKind::FAN, profile);
    device.maximum = profile.maximum;
    device.tach = profile.tach;
    auto* const driver = new HostedFan(DRIVER::INSTANCE(), endpointOf(profile.name), profile,
                                       device.path, m_locator);
    m_fans.emplace_back(driver); // one more reference
    connect(std::move(device), profile, driver, {answer(MSG_GET_MAXIMUM, profile.maximum)});
}

void Host::addThermal(const ThermalProfile& profile) {
    Device device = locate(DeviceKind::THERMAL, profile);
    device.maximum = profile.maximum;
    connect(std::move(device), profile,
            new CThermalSensor(DRIVER::INSTANCE(), profile.name.c_str(), endpointOf(profile.name)),
            {answer(MSG_GET_MAXIMUM, profile.maximum)});
}

void Host::addPower(const PowerProfile& profile) {
    connect(locate(DeviceKind::POWER, profile), profile,
            new CPowerStatus(DRIVER::INSTANCE(), profile.name.c_str(), endpointOf(profile.name)),
            {});
}

void Host::addLed(const LedDeviceProfile& profile) {
    Device device = locate(DeviceKind::LED, profile);
    device.on = profile.on;
    device.biStatus = profile.biStatus;
    connect(std::move(device), profile,
            new CLedControl(DRIVER::INSTANCE(), profile.name.c_str(), endpointOf(profile.name)),
            {answer(MSG_GET_BI_STATUS, profile.biStatus)});
}

void Host::addDescriptor(const DescriptorProfile& profile) {
    Device device{};
    device.kind = DeviceKind::DESCRIPTOR;
    device.name = DESCRIPTOR_DRIVER;
    try {
        withPlaceInErrors(profile.device, [&](const std::string& named) {
            device.path = m_locator.locate(named);
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
    Device device{};
    device.kind = DeviceKind::VOIP;
    device.name = CAPACITY_DRIVER;
    enroll(std::move(device), *m_capacity);
}

void Host::loadPreferences(const NamedPath& file) {
    Device device{};
    device.kind = DeviceKind::PREFERENCES;
    device.name = "preferences";
    device.path = file.path;
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
