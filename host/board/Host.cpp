#include "board/Host.h"

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

namespace board {

namespace {

/// Rejects a file that would block a reader, such as a pipe: a driver must not hang when it first
/// opens the file. Accepts a missing file, which the driver will report.
void expectDeviceFile(const std::string& path) {
    const FileKind kind = kindOf(path);
    const bool isAllowed = kind == FileKind::MISSING || kind == FileKind::REGULAR ||
                           kind == FileKind::BLOCK_DEVICE || kind == FileKind::CHARACTER_DEVICE;
    if (!isAllowed)
        throw Error(path + ": is not a device file (expected a file or a device)");
}

/// The board's VoIP capacity, with the default number of SIP legs from its profile.
class Capacity : public CResourceVoip {
public:
    explicit Capacity(const VoipProfile& profile)
        : CResourceVoip(profile.borderController), m_defaultSipLegs(profile.defaultSipLegs) {}
    unsigned getDefaultSipLegs() override { return m_defaultSipLegs; }

private:
    const unsigned m_defaultSipLegs;
};

Device describe(DeviceKind kind, const DeviceProfile& entry) {
    Device device{};
    device.kind = kind;
    device.name = entry.name;
    device.description = entry.description;
    device.endpoint = DriverConnection::endpointOf(entry).c_str();
    return device;
}

/// Which file was found at `path`, if the profile does not name that path itself.
std::optional<FileIdentity> identityIfNamed(const NamedPath& named, const std::string& path) {
    return named.path == path ? std::nullopt : tryIdentify(path);
}

} // namespace

const char* kindName(DeviceKind kind) {
    constexpr const char* NAMES[] = {"fan",        "thermal", "power",      "led",
                                     "descriptor", "voip",    "preferences"};
    return NAMES[static_cast<std::size_t>(kind)];
}

Host::Host(const Profile& profile, const DeviceChoice& choice, const DeviceLocator& locator)
    : m_locator(locator) {
    const DeviceLocator search = m_locator.readingOnce();
    for (const FanProfile& fan : profile.fans)
        if (choice.includes(DeviceKind::FAN, fan.name))
            addFan(fan, search);
    for (const ThermalProfile& sensor : profile.thermals)
        if (choice.includes(DeviceKind::THERMAL, sensor.name))
            addThermal(sensor, search);
    for (const PowerProfile& power : profile.powers)
        if (choice.includes(DeviceKind::POWER, power.name))
            addPower(power, search);
    for (const LedDeviceProfile& led : profile.leds)
        if (choice.includes(DeviceKind::LED, led.name))
            addLed(led, search);
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
}

const Device* Host::find(const std::string& name) const {
    const auto found = m_places.find(name);
    return found != m_places.end() ? &m_devices[found->second.device] : nullptr;
}

std::optional<std::string> Host::faultOf(const std::string& name) const {
    const Device* const device = find(name);
    return device ? device->fault : std::nullopt;
}

HostedFan* Host::fan(const std::string& name) const {
    const auto found = m_fansByName.find(name);
    return found != m_fansByName.end() ? found->second : nullptr;
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

void Host::locate(Device& device, const DeviceProfile& entry, const DeviceLocator& locator) {
    device.fault.reset();
    device.tachPath.clear();
    try {
        if (device.tach)
            device.tachPath = locator.locate(device.tach->path);
    } catch (const Error&) { // a reading of the fan reports it
    }
    try {
        withPlaceInErrors(entry.device, [&](const std::string& named) {
            device.path = locator.locate(named);
            expectDeviceFile(device.path);
        });
    } catch (const Error& error) {
        device.fault = error.what();
    }
    device.identity = identityIfNamed(entry.device, device.path);
    if (device.tach)
        device.tachIdentity = identityIfNamed(*device.tach, device.tachPath);
}

void Host::connect(Device device, const DeviceProfile& entry, CKernelDriver* driver,
                   std::vector<MxMsg> answers) {
    const std::size_t connection = m_connections.size();
    connect(m_connections.emplace_back(entry, driver, std::move(answers)), device);
    enroll(std::move(device), *driver, connection);
}

void Host::connect(DriverConnection& connection, Device& device) {
    if (device.fault)
        return;
    try {
        withPlaceInErrors(connection.entry().device,
                          [&](const std::string&) { connection.open(device.path); });
    } catch (const Error& error) {
        device.fault = error.what();
    }
}

void Host::reconnect(const std::string& name) {
    const auto found = m_places.find(name);
    if (found == m_places.end() || !found->second.isRegistered)
        return;
    const Place& place = found->second;
    Device& device = m_devices[place.device];
    if (device.kind == DeviceKind::DESCRIPTOR && !m_descriptorPath.empty())
        locateDescriptor(device, *m_descriptorProfile);
    if (!place.connection)
        return;
    DriverConnection& connection = m_connections[*place.connection];
    locate(device, connection.entry(), m_locator);
    if (HostedFan* const moved = fan(name))
        moved->moveTo(device.path);
    connect(connection, device);
}

bool Host::hasMoved(const Device& device) {
    return (device.identity && tryIdentify(device.path) != device.identity) ||
           (device.tachIdentity && tryIdentify(device.tachPath) != device.tachIdentity);
}

void Host::addFan(const FanProfile& profile, const DeviceLocator& locator) {
    Device device = describe(DeviceKind::FAN, profile);
    device.maximum = profile.maximum;
    device.tach = profile.tach;
    locate(device, profile, locator);
    auto* const driver = new HostedFan(DRIVER::INSTANCE(), DriverConnection::endpointOf(profile),
                                       profile, device.path, m_locator);
    m_fans.emplace_back(driver); // one more reference
    m_fansByName.emplace(profile.name, driver);
    connect(std::move(device), profile, driver, {answer(MSG_GET_MAXIMUM, profile.maximum)});
}

void Host::addThermal(const ThermalProfile& profile, const DeviceLocator& locator) {
    Device device = describe(DeviceKind::THERMAL, profile);
    device.maximum = profile.maximum;
    device.hysteresis = profile.hysteresis;
    locate(device, profile, locator);
    connect(std::move(device), profile,
            new CThermalSensor(DRIVER::INSTANCE(), profile.name.c_str(),
                               DriverConnection::endpointOf(profile)),
            {answer(MSG_GET_MAXIMUM, profile.maximum)});
}

void Host::addPower(const PowerProfile& profile, const DeviceLocator& locator) {
    Device device = describe(DeviceKind::POWER, profile);
    locate(device, profile, locator);
    connect(std::move(device), profile,
            new CPowerStatus(DRIVER::INSTANCE(), profile.name.c_str(),
                             DriverConnection::endpointOf(profile)),
            {});
}

void Host::addLed(const LedDeviceProfile& profile, const DeviceLocator& locator) {
    Device device = describe(DeviceKind::LED, profile);
    device.on = profile.on;
    device.biStatus = profile.biStatus;
    locate(device, profile, locator);
    connect(std::move(device), profile,
            new CLedControl(DRIVER::INSTANCE(), profile.name.c_str(),
                            DriverConnection::endpointOf(profile)),
            {answer(MSG_GET_BI_STATUS, profile.biStatus)});
}

void Host::addDescriptor(const DescriptorProfile& profile) {
    Device device{};
    device.kind = DeviceKind::DESCRIPTOR;
    device.name = DESCRIPTOR_DRIVER;
    m_descriptorProfile = &profile;
    locateDescriptor(device, profile);
    m_descriptor = TYPPtr<CBoardDescr>::adopt(
        m_descriptorPath.empty()
            ? new CBoardDescr
            : new CBoardDescr(m_descriptorPath.c_str(), profile.readChunk, profile.size));
    enroll(std::move(device), *m_descriptor);
}

void Host::locateDescriptor(Device& device, const DescriptorProfile& profile) {
    device.fault.reset();
    try {
        withPlaceInErrors(profile.device, [&](const std::string& named) {
            device.path = m_locator.locate(named);
            expectDescriptorDevice(device.path);
            if (!m_descriptor)
                m_descriptorPath = device.path;
            expectReadable(device.path);
        });
    } catch (const Error& error) {
        device.fault = error.what();
    }
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
    append(std::move(device), {});
}

void Host::enroll(Device device, IDriver& driver, std::optional<std::size_t> connection) {
    const XCode status = DRIVER::INSTANCE()->registerDriver(&driver);
    if (status.isSuccess())
        m_registered.push_back(driver.getDriverName());
    else if (!device.fault)
        device.fault = status.getMessage().c_str();
    append(std::move(device), {0, connection, status.isSuccess()});
}

void Host::append(Device device, Place place) {
    place.device = m_devices.size();
    m_places.emplace(device.name, place);
    m_devices.push_back(std::move(device));
}

} // namespace board
