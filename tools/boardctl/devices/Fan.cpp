#include <string>
#include <vector>

#include "board/Readings.h"
#include "output/Readings.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/WordChecks.h"

namespace boardctl {

namespace {

struct FanWords {
    std::string name, speed;
};

constexpr char AUTOMATIC[] = "auto";

board::FanReading readOrSet(const board::Host& host, const std::string& name,
                            const std::string& speed) {
    if (speed.empty())
        return board::readFan(host, name);
    return speed == AUTOMATIC ? board::setFanAutomatic(host, name)
                              : board::setFan(host, name, board::speedOf(speed));
}

int fan(const Options& options, const FanWords& words) {
    const Board board(options, board::DeviceKind::FAN, words.name);
    if (!words.speed.empty() && board.names().size() > 1)
        throw WrongCall("the board has several fans: choose one with --name");
    std::vector<board::FanReading> readings;
    for (const std::string& name : board.names())
        readings.push_back(readOrSet(board.host(), name, words.speed));
    return show(readings, options.json);
}

} // namespace

void addFan(CLI::App& app, Options& options) {
    const auto [command, words] = addCommand<FanWords, fan>(
        app, options, "fan", "Read a fan's speed, or set it and read it back");
    command
        .add_option("SPEED", words.speed,
                    "The speed to set; it stays when the command ends. auto: let the chip control "
                    "the fan again")
        ->check(oneOf({"full", "high", "low", "off", AUTOMATIC}))
        ->option_text("full|high|low|off|auto");
    command.add_option("--name", words.name, "The fan; needed to set one of several")
        ->check(notEmpty())
        ->type_name("NAME");
}

} // namespace boardctl
