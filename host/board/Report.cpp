#include "Report.h"

#include <limits>

#include "DRIVER.h"
#include "Host.h"
#include "IDriverRepository.h"

namespace board {

namespace {

constexpr unsigned EVERYTHING = std::numeric_limits<unsigned>::max();

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

Report makeReport(const Host& host) {
    Report report;
    std::string descriptorFault;
    if (host.descriptor())
        descriptorFault = loadDescriptor(host);
    VELM_List<String> names;
    DRIVER::INSTANCE()->getDriverNames(names);
    for (const String& name : names) {
        report.drivers.push_back(reportOf(host, name));
        if (name == DESCRIPTOR_DRIVER)
            report.drivers.back().fault = descriptorFault;
    }
    for (const Device& device : host.devices())
        if (device.kind == "fan")
            report.fans.push_back(readFan(host, device.name));
    return report;
}

} // namespace board
