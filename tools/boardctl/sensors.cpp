#include "CommandLine.h"
#include "Output.h"

namespace {

/// A command that reads all devices of a kind, or the one that --name picks.
template <class AReading>
void addReader(CLI::App& app, Options& options, const char* command, const char* kind,
               const char* text, AReading (*read)(const board::Host&, const std::string&)) {
    auto* const sub = app.add_subcommand(command, text);
    const auto name = std::make_shared<std::string>();
    sub->add_option("--name", *name, "Which of several")->check(notEmpty())->type_name("NAME");
    sub->callback([&options, kind, read, name] {
        options.command = [&options, kind, read, name] {
            const Board board(options);
            std::vector<AReading> readings;
            for (const std::string& each : board.devices(kind, *name))
                readings.push_back(read(board.host(), each));
            return show(readings, options.json);
        };
    });
}

} // namespace

void addTemp(CLI::App& app, Options& options) {
    addReader(app, options, "temp", "thermal", "Read the temperature sensors",
              &board::readTemperature);
}

void addPower(CLI::App& app, Options& options) {
    addReader(app, options, "power", "power", "Read the power status", &board::readPower);
}
