#include <iostream>

#include "CommandLine.h"
#include "Output.h"
#include "Report.h"

using nlohmann::ordered_json;

namespace {

void printText(const board::Report& report) {
    InfoContainer rows;
    for (const board::DriverReport& driver : report.drivers) {
        for (const auto& row : driver.rows.getRows())
            rows.add(row.level, row.index, row.key, row.value);
        for (const board::FanReading& fan : report.fans)
            if (fan.name == driver.name) {
                rows.add(1, 0, "Description", fan.description.c_str());
                rows.add(1, 0, "Speed", fan.fault.empty() ? board::speedName(fan.speed) : "unknown");
            }
    }
    printRows(rows);
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
