#pragma once

#include <string>
#include <vector>

#include "output/Readings.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/WordChecks.h"

namespace boardctl {

struct SensorWords {
    std::string name;
};

/// Reads all devices of a kind, or the one that --name picks, by calling READ(host, device).
template <board::DeviceKind KIND, auto READ>
int readSensors(const Options& options, const SensorWords& words) {
    const Board board(options, KIND, words.name);
    std::vector<decltype(READ(board.host(), ""))> readings;
    for (const std::string& device : board.names())
        readings.push_back(READ(board.host(), device));
    return show(readings, options.json);
}

template <board::DeviceKind KIND, auto READ>
void addSensorCommand(CLI::App& app, Options& options, const char* name, const char* text) {
    const auto [command, words] =
        addCommand<SensorWords, readSensors<KIND, READ>>(app, options, name, text);
    command.add_option("--name", words.name, "The device to read; default: all of them")
        ->check(notEmpty())
        ->type_name("NAME");
}

} // namespace boardctl
