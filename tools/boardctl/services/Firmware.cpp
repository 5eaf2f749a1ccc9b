#include <iostream>
#include <string>

#include "base/Error.h"
#include "base/Text.h"
#include "board/Firmware.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "output/Readings.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/WordChecks.h"

namespace boardctl {

namespace {

struct FirmwareWords {
    std::string file;
};

board::Result<board::FirmwareInfo> readFirmware(const Options& options, const std::string& file) {
    if (!file.empty())
        return board::readFirmware(file);
    const BoardProfile board(options);
    if (!board.profile().firmware)
        throw board::Error(board.profilePath() +
                           ": the board has no firmware information (expected a table [firmware])");
    return board::readFirmware(*board.profile().firmware);
}

int firmware(const Options& options, const FirmwareWords& words) {
    const board::Result<board::FirmwareInfo> firmware = readFirmware(options, words.file);
    if (options.json)
        printJson(toJson(firmware));
    else if (firmware)
        std::cout << board::printable(firmware->version) << "\n";
    if (firmware)
        return DONE;
    complain(firmware.fault());
    return FAILED;
}

} // namespace

void addFirmware(CLI::App& app, Options& options) {
    const auto [command, words] = addCommand<FirmwareWords, firmware>(
        app, options, "firmware", "Show the version of the firmware image");
    command.add_option("FILE", words.file, "The information file; default: the board's own")
        ->check(notEmpty())
        ->type_name("");
}

} // namespace boardctl
