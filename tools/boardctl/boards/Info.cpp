#include <chrono>
#include <iostream>

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
#include "program/StopSignals.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

ordered_json capacityToJson(const board::CapacityReport& capacity) {
    ordered_json json = {{"dsp_channels", nullptr}, {"sip_legs", capacity.sipLegs}};
    if (capacity.dspChannels)
        json["dsp_channels"] = *capacity.dspChannels;
    else
        json["error"] = "the board does not say how many DSP channels it has";
    return json;
}

ordered_json reportToJson(const board::Report& report) {
    ordered_json drivers = ordered_json::array();
    for (const board::DriverReport& driver : report.drivers) {
        drivers.push_back({{"name", driver.name}, {"rows", rowsToJson(driver.rows)}});
        if (!driver.fault.empty())
            drivers.back()["error"] = driver.fault;
    }
    ordered_json json = {{"drivers", drivers},
                         {"fans", readingsToJson(report.fans)},
                         {"temperatures", readingsToJson(report.temperatures)},
                         {"power", readingsToJson(report.powers)},
                         {"leds", readingsToJson(report.leds)}};
    if (report.capacity)
        json["capacity"] = capacityToJson(*report.capacity);
    if (report.cpu) {
        json["cpu"] = {
            {"last", toJson(*report.cpu)["last"]}}; // one span is all that two samples have
        if (!report.cpu->fault.empty())
            json["cpu"]["error"] = report.cpu->fault;
    }
    if (report.firmware)
        json["firmware"] = toJson(*report.firmware);
    return json;
}

board::FirmwareReading firmwareOf(const board::NamedPath& file) {
    board::FirmwareReading firmware = board::readFirmware(file.path);
    if (!firmware.fault.empty())
        firmware.fault = file.place + ": " + firmware.fault;
    return firmware;
}

int info(const Options& options) {
    constexpr auto CPU_SPAN = std::chrono::milliseconds(100);
    const auto end = StopSignals::Clock::now() + CPU_SPAN;
    board::CpuMeter meter;
    const Board board(options);
    board::Report report = board::makeReport(board.host());
    if (board.profile().firmware)
        report.firmware = firmwareOf(*board.profile().firmware);
    static_cast<void>(StopSignals::waitUntil(end)); // cut short, the span is but shorter
    report.cpu = meter.next();
    if (options.json)
        printJson(reportToJson(report));
    else if (options.metrics)
        std::cout << board::toMetrics(report);
    else
        printRows(dumpOf(report));

    int status = DONE;
    for (const board::Device& device : board.host().devices())
        if (device.kind == "preferences" && !device.fault.empty()) { // no driver stands for it
            complain("preferences: " + device.fault);
            status = FAILED;
        }
    for (const board::DriverReport& driver : report.drivers)
        if (!driver.fault.empty()) {
            complain("driver '" + driver.name + "': " + driver.fault);
            status = FAILED;
        }
    for (const std::string& fault :
         {report.cpu->fault, report.firmware ? report.firmware->fault : ""})
        if (!fault.empty()) {
            complain(fault);
            status = FAILED;
        }
    return status;
}

} // namespace

void addInfo(CLI::App& app, Options& options) {
    addCommand(app, options, "info", "Show everything that the board's drivers say of themselves",
               info);
}

} // namespace boardctl
