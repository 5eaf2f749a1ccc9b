#include <iostream>
#include <string>
#include <vector>

#include "board/CpuMeter.h"
#include "board/Metrics.h"
#include "board/Report.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "output/Readings.h"
#include "output/ReportRows.h"
#include "output/Rows.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"

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

/// Prints a message for everything that the report could not determine. Returns the exit status.
int complainOf(const board::Report& report, const board::Host& host) {
    std::vector<std::string> faults;
    for (const board::Device& device : host.devices())
        if (device.kind == board::DeviceKind::PREFERENCES && device.fault) // no driver reports it
            faults.push_back("preferences: " + *device.fault);
    for (const board::DriverReport& driver : report.drivers)
        if (driver.fault)
            faults.push_back("driver '" + driver.name + "': " + *driver.fault);
    if (report.cpuSinceBoot && !*report.cpuSinceBoot)
        faults.push_back(report.cpuSinceBoot->fault());
    if (report.firmware && !*report.firmware)
        faults.push_back(report.firmware->fault());
    for (const std::string& fault : faults)
        complain(fault);
    return faults.empty() ? DONE : FAILED;
}

int info(const Options& options) {
    const Board board(options);
    board::Report report = board::makeReport(board.host());
    if (board.profile().firmware)
        report.firmware = board::readFirmware(*board.profile().firmware);
    report.cpuSinceBoot = board::cpuLoadSinceBoot();
    if (options.json)
        printJson(reportToJson(report));
    else if (options.metrics)
        std::cout << board::toMetrics(report, board.isSimulated());
    else
        printRows(dumpOf(report));

    return complainOf(report, board.host());
}

} // namespace

void addInfo(CLI::App& app, Options& options) {
    addCommand(app, options, "info", "Show everything that the board's drivers report", info);
}

} // namespace boardctl
