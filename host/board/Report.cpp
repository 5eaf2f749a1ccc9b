#include "Report.h"

#include <limits>

#include "DRIVER.h"
#include "Host.h"
#include "IDriverRepository.h"

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
            report.fans.push_back(readFan(host, device.name));
        else if (device.kind == "thermal")
            report.temperatures.push_back(readTemperature(host, device.name));
        else if (device.kind == "power")
            report.powers.push_back(readPower(host, device.name));
        else if (device.kind == "led")
            report.leds.push_back(readLed(host, device.name));
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
