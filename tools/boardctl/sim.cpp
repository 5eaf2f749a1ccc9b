#include <iostream>

#include "CommandLine.h"
#include "Output.h"
#include "Progress.h"
#include "StopSignals.h"
#include "base/Error.h"
#include "simulation/SimulatedButton.h"

void addSim(CLI::App& app, Options& options) {
    auto* const sim = app.add_subcommand("sim", "Simulated boards");
    sim->require_subcommand(1);
    const auto directory = std::make_shared<std::string>();
    auto* const create = sim->add_subcommand("create", "Make a simulated board in a folder");
    create->add_option("DIR", *directory, "A new or empty folder")
        ->check(notEmpty())
        ->type_name("")
        ->required();
    create->callback([&options, directory] {
        options.command = [&options, directory] {
            const auto board = board::SimulatedBoard::create(*directory);
            if (options.json)
                printJson({{"profile", board.profile()}});
            else
                std::cout << "made " << board.profile() << "; try: boardctl --board "
                          << board.profile() << " info\n";
            return static_cast<int>(DONE);
        };
    });

    auto* const press =
        sim->add_subcommand("press", "Press the button of the simulated board that --board names");
    const auto span = std::make_shared<double>(0.1);
    press->add_option("--for", *span, "How long it is held; 0.1 seconds without this")
        ->check(seconds())
        ->option_text("SECONDS");
    press->callback([&options, span] {
        options.command = [&options, span] {
            if (options.board.empty())
                throw WrongCall("--board must say which board's button is pressed (`boardctl sim "
                                "create DIR` makes a "
                                "board)");
            const BoardProfile board(options);
            if (!board.profile().button)
                throw board::Error(board.profilePath() + ": the board has no button");
            board::withPlaceInErrors(*board.profile().button, [&](const std::string& pipe) {
                const board::SimulatedButton button(pipe);
                if (button.isHeld())
                    complain("waits until another program lets go of the button");
                button.press();
                static_cast<void>(Progress(*span).waitUntil(
                    StopSignals::Clock::now() +
                        std::chrono::duration_cast<StopSignals::Clock::duration>(
                            std::chrono::duration<double>(*span)),
                    "holding the button"));
                button.release();
            });
            return static_cast<int>(DONE);
        };
    });
}
