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

/// Keeps a reading, and its fault also with its driver where that has none yet.
template <class AReading>
void add(Report& report, std::vector<AReading>& readings, AReading reading) {
    for (DriverReport& driver : report.drivers)
        if (driver.name == reading.name && driver.fault.empty())
            driver.fault = reading.fault;
    readings.push_back(std::move(reading));
}

/// A LED's own rows say "off" where it failed to read the device; where the reading knows better it
/// is asked again.
void refreshRows(const Host& host, Report& report, const LedReading& led) {
    const auto isOff = [](const InfoContainer::Row& row) {
        return row.key == "Status" && row.value == "off";
    };
    for (DriverReport& driver : report.drivers) {
        const auto& rows = driver.rows.getRows();
        if (driver.name == led.name && led.state != 0 &&
            std::any_of(rows.begin(), rows.end(), isOff))
            driver.rows = reportOf(host, led.name.c_str()).rows;
    }
}

} // namespace

std::string loadDescriptor(const Host& host) {
    CBoardDescr& descriptor = *host.descriptor();
    String error;
    const TYLockHolder hold(descriptor.getLock());
    if (descriptor.readBD(error).isSuccess())
        return std::string();
    // The driver says what failed, the host why.
    const std::string fault = host.faultOf(DESCRIPTOR_DRIVER);
    if (error.isEmpty())
        return fault.empty() ? "the board descriptor can't be read" : fault;
    return fault.empty() ? error.c_str() : error.c_str() + (" (" + fault + ")");
}

std::string settleCapacity(const Host& host) {
    CResourceVoip& capacity = *host.capacity();
    String error;
    const TYLockHolder hold(capacity.getLock());
    if (capacity.setup(error).isSuccess())
        return std::string();
    return error.c_str();
}

Report makeReport(const Host& host) {
    Report report;
    const std::string descriptorFault = host.descriptor() ? loadDescriptor(host) : std::string();
    const std::string capacityFault = host.capacity() ? settleCapacity(host) : std::string();
    VELM_List<String> names;
    DRIVER::INSTANCE()->getDriverNames(names);
    for (const String& name : names) {
        DriverReport driver = reportOf(host, name);
        if (name == DESCRIPTOR_DRIVER)
            driver.fault = descriptorFault;
        else if (name == CAPACITY_DRIVER)
            driver.fault = capacityFault;
        report.drivers.push_back(std::move(driver));
    }
    for (const Device& device : host.devices()) {
        if (device.kind == "fan")
            add(report, report.fans, readFan(host, device.name));
        else if (device.kind == "thermal")
            add(report, report.temperatures, readTemperature(host, device.name));
        else if (device.kind == "power")
            add(report, report.powers, readPower(host, device.name));
        else if (device.kind == "led") {
            add(report, report.leds, readLed(host, device.name));
            refreshRows(host, report, report.leds.back());
        }
    }
    if (host.capacity() && capacityFault.empty()) {
        const unsigned channels = host.capacity()->getDspChannelCount();
        report.capacity =
            CapacityReport{channels == UNKNOWN_CHANNELS ? std::nullopt : std::optional(channels),
                           host.capacity()->getSipLegCount()};
    }
    return report;
}

} // namespace board
