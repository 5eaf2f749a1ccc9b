#include "board/Report.h"

#include <algorithm>
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
        if (driver.name == reading.name && !driver.fault && !reading.value)
            driver.fault = reading.value.fault();
    readings.push_back(std::move(reading));
}

/// The rows of an LED that could not be read say "off". If it could be read shortly after, asks for
/// the rows again.
void refreshRows(const Host& host, Report& report, const LedReading& led) {
    if (!led.value || *led.value == 0)
        return;
    const auto isOff = [](const InfoContainer::Row& row) {
        return row.key == "Status" && row.value == "off";
    };
    for (DriverReport& driver : report.drivers) {
        const auto& rows = driver.rows.getRows();
        if (driver.name == led.name && std::any_of(rows.begin(), rows.end(), isOff))
            driver.rows = reportOf(host, led.name.c_str()).rows;
    }
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
        add(report, report.leds, readLed(host, device.name));
        return refreshRows(host, report, report.leds.back());
    case DeviceKind::DESCRIPTOR:
    case DeviceKind::VOIP:
    case DeviceKind::PREFERENCES:
        return; // these have no reading
    }
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
    if (host.capacity() && capacity) {
        const unsigned channels = host.capacity()->getDspChannelCount();
        report.capacity =
            CapacityReport{channels == UNKNOWN_CHANNELS ? std::nullopt : std::optional(channels),
                           host.capacity()->getSipLegCount()};
    }
    return report;
}

} // namespace board
