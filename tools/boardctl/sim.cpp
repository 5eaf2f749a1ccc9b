#include <iostream>

#include "CommandLine.h"
#include "Output.h"

void addSim(CLI::App& app, Options& options) {
    auto* const sim = app.add_subcommand("sim", "Simulated boards");
    sim->require_subcommand(1);
    const auto directory = std::make_shared<std::string>();
    auto* const create = sim->add_subcommand("create", "Make a simulated board in a folder");
    create->add_option("DIR", *directory, "A new or empty folder")
        ->check(notEmpty())
        ->type_name("DIR")
        ->required();
    create->callback([&options, directory] {
        options.command = [&options, directory] {
            const auto board = board::SimulatedBoard::create(*directory);
            if (options.json)
                printJson({{"profile", board.profile()}});
            else
                std::cout << "made " << board.profile() << "; try: boardctl --board " << board.profile()
                          << " info\n";
            return static_cast<int>(DONE);
        };
    });
}
