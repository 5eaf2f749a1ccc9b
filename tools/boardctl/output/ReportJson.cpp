#include "output/ReportJson.h"

#include "output/Readings.h"
#include "output/Rows.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

ordered_json capacityToJson(const board::CapacityReport& capacity) {
    ordered_json json = {{"dsp_channels", nullptr}, {"sip_legs", capacity.sipLegs}};
    if (capacity.dspChannels)
        json["dsp_channels"] = *capacity.dspChannels;
    else
        json["error"] = "the board does not state how many DSP channels it has";
    return json;
}

} // namespace

ordered_json reportToJson(const board::Report& report) {
    ordered_json drivers = ordered_json::array();
    for (const board::DriverReport& driver : report.drivers) {
        drivers.push_back({{"name", driver.name}, {"rows", rowsToJson(driver.rows)}});
        if (driver.fault)
            drivers.back()["error"] = *driver.fault;
    }
    ordered_json json = {{"drivers", drivers},
                         {"fans", readingsToJson(report.fans)},
                         {"temperatures", readingsToJson(report.temperatures)},
                         {"power", readingsToJson(report.powers)},
                         {"leds", readingsToJson(report.leds)}};
    if (report.capacity)
        json["capacity"] = capacityToJson(*report.capacity);
    if (report.cpuSinceBoot && *report.cpuSinceBoot)
        json["cpu"] = {{"since_boot", **report.cpuSinceBoot}};
    else if (report.cpuSinceBoot)
        json["cpu"] = {{"since_boot", nullptr}, {"error", report.cpuSinceBoot->fault()}};
    if (report.firmware)
        json["firmware"] = toJson(*report.firmware);
    return json;
}

} // namespace boardctl
