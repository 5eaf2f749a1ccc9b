#include "board/Report.h"

#include <functional>
#include <limits>
#include <utility>

#include "DRIVER.h"
#include "IDriverRepository.h"
#include "board/Host.h"

namespace board {

namespace {

constexpr unsigned EVERYTHING = std::numeric_limits<unsigned>::max();
constexpr unsigned UNKNOWN_CHANNELS = 0xFFFFFFFF;

DriverReport reportOf(const Host& host, const String& name) {
    DriverReport report{name.c_str(), {}, host.faultOf(name.c_str())};
    TYPPtr<IInfo> info;
    if (DRIVER::INSTANCE()->getInterface(name, info).isSuccess()) {
        const auto hold = info.getLock();
        info->getInfo(report.rows, EVERYTHING, 0, EVERYTHING, 0, String::EMPTY());
    }
    return report;
}

/// Keeps a reading. Its fault also becomes the driver's, unless the driver has one already.
template <class DeviceReading>
void add(Report& report, std::vector<DeviceReading>& readings, DeviceReading reading) {
    for (DriverReport& driver : report.drivers)
        if (driver.name == reading.name && !driver.fault)
            driver.fault = reading.fault();
    readings.push_back(std::move(reading));
}

/// Replaces the rows of driver `name` by what `change` makes of each. An empty value removes a row.
void changeRows(Report& report, const std::string& name,
                const std::function<String(const InfoContainer::Row&)>& change) {
    for (DriverReport& driver : report.drivers) {
        if (driver.name != name)
            continue;
        InfoContainer rows;
        for (const InfoContainer::Row& row : driver.rows.getRows()) {
            const String value = row.level == 0 ? row.value : change(row);
            if (row.level == 0 || !value.isEmpty())
                rows.add(row.level, row.index, row.key, value);
        }
        driver.rows = std::move(rows);
    }
}

/// The driver prints "off" for an LED that it could not read, and its own description, which is
/// empty before it is connected. The reading knows both.
void addLed(Report& report, const LedReading& led) {
    add(report, report.leds, led);
    changeRows(report, led.name, [&](const InfoContainer::Row& row) -> String {
        if (row.key == "Description")
            return led.description.c_str();
        if (row.key == "Status")
            return !led.value ? "" : *led.value != 0 ? "on" : "off";
        return row.value;
    });
}

void addReading(const Host& host, Report& report, const Device& device) {
    switch (device.kind) {
    case DeviceKind::FAN:
        return add(report, report.fans, readFan(host, device.name));
    case DeviceKind::THERMAL:
        return add(report, report.temperatures, readTemperature(host, device.name));
    case DeviceKind::POWER:
        return add(report, report.powers, readPower(host, device.name));
    case DeviceKind::LED:
        return addLed(report, readLed(host, device.name));
    case DeviceKind::DESCRIPTOR:
    case DeviceKind::VOIP:
    case DeviceKind::PREFERENCES:
        return; // these have no reading
    }
}

/// Adds the figures that were determined, and removes the rows of the others: the driver prints the
/// largest number for unknown channels, and zeros before the capacity has been determined.
void addCapacity(Report& report, const CResourceVoip& driver, bool isDetermined) {
    const std::optional<unsigned> channels = dspChannelsOf(driver);
    if (isDetermined)
        report.capacity = CapacityReport{channels, driver.getSipLegCount()};
    changeRows(report, CAPACITY_DRIVER, [&](const InfoContainer::Row& row) -> String {
        const bool isOfChannels = row.key == "DSP Channels" || row.key == "Transcoding";
        const bool isKnown =
            row.key == "Border Controller" || (isDetermined && (channels || !isOfChannels));
        return isKnown ? row.value : String::EMPTY();
    });
}

std::optional<std::string> faultIn(const Result<void>& result) {
    return result ? std::nullopt : std::optional(result.fault());
}

} // namespace

Result<void> loadDescriptor(const Host& host) {
    CBoardDescr& descriptor = *host.descriptor();
    String error;
    const TYLockHolder hold(descriptor.getLock());
    if (descriptor.readBD(error).isSuccess())
        return {};
    // The driver reports what failed; the host knows the reason.
    const auto reason = host.faultOf(DESCRIPTOR_DRIVER);
    if (error.isEmpty())
        return Fault{reason.value_or("the board descriptor can't be read")};
    return Fault{reason ? error.c_str() + (" (" + *reason + ")") : error.c_str()};
}

Result<void> settleCapacity(const Host& host) {
    CResourceVoip& capacity = *host.capacity();
    String error;
    const TYLockHolder hold(capacity.getLock());
    if (capacity.setup(error).isSuccess())
        return {};
    return Fault{error.c_str()};
}

BoardIdentity identityOf(CBoardDescr& descriptor) {
    const TYLockHolder hold(descriptor.getLock());
    BoardIdentity identity;
    String error;
    unsigned identifier = 0;
    if (descriptor.getPlatformID(identifier, error).isSuccess())
        identity.platform = identifier;
    if (descriptor.getProductID(identifier, error).isSuccess())
        identity.product = identifier;
    return identity;
}

std::string identifierText(unsigned identifier) {
    return String::format("0x%04x", identifier).c_str();
}

std::optional<unsigned> dspChannelsOf(const CResourceVoip& capacity) {
    const unsigned channels = capacity.getDspChannelCount();
    return channels == UNKNOWN_CHANNELS ? std::nullopt : std::optional(channels);
}

Report makeReport(const Host& host) {
    Report report;
    const auto descriptor = host.descriptor() ? loadDescriptor(host) : Result<void>();
    const auto capacity = host.capacity() ? settleCapacity(host) : Result<void>();
    VELM_List<String> names;
    DRIVER::INSTANCE()->getDriverNames(names);
    for (const String& name : names) {
        DriverReport driver = reportOf(host, name);
        if (name == DESCRIPTOR_DRIVER)
            driver.fault = faultIn(descriptor);
        else if (name == CAPACITY_DRIVER)
            driver.fault = faultIn(capacity);
        report.drivers.push_back(std::move(driver));
    }
    for (const Device& device : host.devices())
        addReading(host, report, device);
    if (host.descriptor() && descriptor)
        report.identity = identityOf(*host.descriptor());
    if (host.capacity())
        addCapacity(report, *host.capacity(), static_cast<bool>(capacity));
    return report;
}

} // namespace board
