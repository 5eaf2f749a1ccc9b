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

int fan(const Options& options, const FanWords& words) {
    const Board board(options);
    const std::vector<std::string> fans = board.devices(board::DeviceKind::FAN, words.name);
    if (!words.speed.empty() && fans.size() > 1)
        throw WrongCall("the board has several fans: choose one with --name");
    std::vector<board::FanReading> readings;
    for (const std::string& each : fans)
        readings.push_back(words.speed.empty()
                               ? board::readFan(board.host(), each)
                               : board::setFan(board.host(), each, board::speedOf(words.speed)));
    return show(readings, options.json);
}

} // namespace

void addFan(CLI::App& app, Options& options) {
    const auto [command, words] = addCommand<FanWords>(
        app, options, "fan", "Read a fan's speed, or set it and read it back", fan);
    command.add_option("SPEED", words.speed, "The speed to set")
        ->check(oneOf({"full", "high", "low", "off"}))
        ->option_text("full|high|low|off");
    command.add_option("--name", words.name, "The fan; needed to set one of several")
        ->check(notEmpty())
        ->type_name("NAME");
}

} // namespace boardctl
