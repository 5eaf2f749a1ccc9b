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

int firmware(const Options& options, const FirmwareWords& words) {
    board::FirmwareReading reading;
    if (!words.file.empty()) {
        reading = board::readFirmware(words.file);
    } else {
        const BoardProfile board(options);
        if (!board.profile().firmware)
            throw board::Error(
                board.profilePath() +
                ": the board has no firmware information (expected a table [firmware])");
        reading = board::readFirmware(board.profile().firmware->path);
        if (!reading.fault.empty())
            reading.fault = board.profile().firmware->place + ": " + reading.fault;
    }
    if (options.json)
        printJson(toJson(reading));
    else if (reading.fault.empty())
        std::cout << board::printable(reading.version) << "\n";
    if (reading.fault.empty())
        return DONE;
    complain(reading.fault);
    return FAILED;
}

} // namespace

void addFirmware(CLI::App& app, Options& options) {
    const auto [command, words] = addCommand<FirmwareWords>(
        app, options, "firmware", "Show the version of the firmware image", firmware);
    command.add_option("FILE", words.file, "The information file; default: the board's own")
        ->check(notEmpty())
        ->type_name("");
}

} // namespace boardctl
