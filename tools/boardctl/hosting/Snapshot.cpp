#include "snapshot/Snapshot.h"

#include <iostream>
#include <string>

#include "base/Events.h"
#include "base/FileReplacement.h"
#include "base/Text.h"
#include "board/CpuMeter.h"
#include "board/Firmware.h"
#include "board/Report.h"
#include "client/UtcText.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "output/ReportJson.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/Help.h"
#include "program/WordChecks.h"
#include "snapshot/SnapshotBoard.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

struct SnapshotWords {
    std::string output;
};

int snapshot(const Options& options, const SnapshotWords& words) {
    const Board board(options);
    board::Report report = board::makeReport(board.host(), {board::DESCRIPTOR_WAIT, complain});
    report.cpuSinceBoot = board::cpuLoadSinceBoot();
    if (board.profile().firmware)
        report.firmware = board::readFirmware(*board.profile().firmware);
    const auto files = board::snapshotFiles(board.profile(), board.host().locator());

    ordered_json json = {{"snapshot", board::SNAPSHOT_VERSION},
                         {"boardctl", BOARDCTL_VERSION},
                         {"time", board::utcText(board::calendarTime())}};
    json.update(board::toJson(board.profilePath(), files));
    json["report"] = reportToJson(report);
    const std::string text = jsonText(json);
    if (words.output == "-") {
        std::cout << text;
        return DONE;
    }
    constexpr mode_t OWNER = 0600; // some of the copied files may be private
    board::replaceFile(words.output, text, OWNER);
    std::size_t unread = 0;
    for (const board::SnapshotFile& file : files)
        unread += file.content ? 0U : 1U;
    std::cout << board::printable(words.output) << ": written; " << files.size() - unread << " of "
              << files.size() << " files of the board could be read\n";
    return DONE;
}

} // namespace

void addSnapshot(CLI::App& app, Options& options) {
    const auto [command, words] = addCommand<SnapshotWords, snapshot>(
        app, options, "snapshot",
        "Write what the board is and holds to one JSON file, for somebody without the board");
    command.add_option("-o,--output", words.output, "The file, which is replaced; - prints it")
        ->check(notEmpty())
        ->option_text("FILE")
        ->required();
    addExamples(command,
                {"snapshot -o board.json",
                 "sim create DIR --from board.json     make a copy of the board elsewhere"});
}

} // namespace boardctl
