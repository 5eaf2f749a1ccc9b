#include <iostream>

#include "CommandLine.h"
#include "Output.h"
#include "Report.h"

using nlohmann::ordered_json;

namespace {

void printText(const board::Report& report) {
    for (const board::DriverReport& driver : report.drivers)
        printRows(driver.rows);
    InfoContainer fans;
    for (const board::FanReading& fan : report.fans) {
        fans.add(0, 0, String("Fan ").concat(fan.name.c_str()), "");
        fans.add(1, 0, "Description", fan.description.c_str());
        fans.add(1, 0, "Speed", fan.fault.empty() ? board::speedName(fan.speed) : "unknown");
    }
    printRows(fans);
}

ordered_json toJson(const board::Report& report) {
    ordered_json drivers = ordered_json::array();
    for (const board::DriverReport& driver : report.drivers) {
        drivers.push_back({{"name", driver.name}, {"rows", rowsToJson(driver.rows)}});
        if (!driver.fault.empty())
            drivers.back()["error"] = driver.fault;
    }
    ordered_json fans = ordered_json::array();
    for (const board::FanReading& fan : report.fans)
        fans.push_back(fanToJson(fan));
    return {{"drivers", drivers}, {"fans", fans}};
}

int info(const Options& options) {
    const Board board(options);
    const board::Report report = board::makeReport(board.host());
    if (options.json)
        printJson(toJson(report));
    else
        printText(report);

    int status = DONE;
    for (const board::DriverReport& driver : report.drivers)
        if (!driver.fault.empty()) {
            complain("driver '" + driver.name + "': " + driver.fault);
            status = FAILED;
        }
    return status;
}

} // namespace

void addInfo(CLI::App& app, Options& options) {
    app.add_subcommand("info", "Show everything that the board's drivers say of themselves")
        ->callback([&options] { options.command = [&options] { return info(options); }; });
}
