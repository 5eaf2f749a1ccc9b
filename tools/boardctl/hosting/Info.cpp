#include <string>
#include <vector>

#include "board/CpuMeter.h"
#include "board/Metrics.h"
#include "board/Report.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "output/OutputFile.h"
#include "output/ReportJson.h"
#include "output/ReportRows.h"
#include "output/Rows.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"

namespace boardctl {

namespace {

struct InfoWords {
    std::string output; ///< empty: standard output
};

/// The faults of everything that the report could not determine.
std::vector<std::string> faultsIn(const board::Report& report, const board::Host& host) {
    std::vector<std::string> faults;
    for (const board::Device& device : host.devices())
        if (device.kind == board::DeviceKind::PREFERENCES && device.fault) // no driver reports it
            faults.push_back("preferences: " + *device.fault);
    for (const board::DriverReport& driver : report.drivers)
        if (driver.fault)
            faults.push_back("driver '" + driver.name + "': " + *driver.fault);
    if (report.firmware && !*report.firmware)
        faults.push_back(report.firmware->fault());
    return faults;
}

std::string reportText(const board::Report& report, const Options& options, const Board& board) {
    if (options.json)
        return jsonText(reportToJson(report));
    if (options.metrics)
        return board::toMetrics(board.host(), report, board.isSimulated(), nullptr);
    return rowsText(dumpOf(report));
}

int info(const Options& options, const InfoWords& words) {
    const Board board(options);
    board::Report report = board::makeReport(board.host(), {board::DESCRIPTOR_WAIT, complain});
    if (board.profile().firmware)
        report.firmware = board::readFirmware(*board.profile().firmware);
    report.cpuSinceBoot = board::cpuLoadSinceBoot();
    printOrReplace(words.output, reportText(report, options, board));
    std::vector<std::string> faults;
    if (!options.metrics) // metrics have a figure for a device that is down
        faults = faultsIn(report, board.host());
    if (!*report.cpuSinceBoot)
        faults.push_back(report.cpuSinceBoot->fault());
    for (const std::string& fault : faults)
        complain(fault);
    return faults.empty() ? DONE : FAILED;
}

} // namespace

void addInfo(CLI::App& app, Options& options) {
    const auto [command, words] = addCommand<InfoWords, info>(
        app, options, "info", "Show everything that the board's drivers report");
    addOutputOption(command, words.output);
}

} // namespace boardctl
