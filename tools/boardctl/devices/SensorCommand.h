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

/// Adds a command that reads all devices of a kind, or the one that --name picks.
template <class Reading>
void addSensorCommand(CLI::App& app, Options& options, const char* name, board::DeviceKind kind,
                      const char* text,
                      Reading (*read)(const board::Host&, const std::string& device)) {
    const auto readAll = [kind, read](const Options& call, const SensorWords& words) {
        const Board board(call, kind, words.name);
        std::vector<Reading> readings;
        for (const std::string& device : board.names())
            readings.push_back(read(board.host(), device));
        return show(readings, call.json);
    };
    const auto [command, words] = addCommand<SensorWords>(app, options, name, text, readAll);
    command.add_option("--name", words.name, "The device to read; default: all of them")
        ->check(notEmpty())
        ->type_name("NAME");
}

} // namespace boardctl
