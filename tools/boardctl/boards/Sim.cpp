#include <iostream>
#include <string>

#include "output/Json.h"
#include "output/Messages.h"
#include "output/Progress.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/StopSignals.h"
#include "program/WordChecks.h"
#include "simulation/SimulatedButton.h"

namespace boardctl {

namespace {

struct CreateWords {
    std::string folder;
};

int create(const Options& options, const CreateWords& words) {
    const auto board = board::SimulatedBoard::create(words.folder);
    if (options.json)
        printJson({{"profile", board.profile()}});
    else
        std::cout << "created " << board.profile() << "; try: boardctl --board " << board.profile()
                  << " info\n";
    return DONE;
}

struct PressWords {
    double seconds = 0.1;
};

int press(const Options& options, const PressWords& words) {
    if (options.board.empty())
        throw WrongCall("--board is missing: it names the board whose button is pressed (`boardctl "
                        "sim create DIR` creates a board)");
    const BoardProfile board(options);
    board::withPlaceInErrors(board.button(), [&](const std::string& pipe) {
        const board::SimulatedButton button(pipe);
        if (button.isHeld())
            complain("waiting until another program releases the button");
        button.press();
        static_cast<void>(
            Progress(words.seconds)
                .waitUntil(StopSignals::Clock::now() + StopSignals::spanOf(words.seconds),
                           "holding the button"));
        button.release();
    });
    return DONE;
}

} // namespace

void addSim(CLI::App& app, Options& options) {
    CLI::App& sim = addGroup(app, "sim", "Simulated boards: create one, press its button");

    const auto [creating, createWords] = addCommand<CreateWords>(
        sim, options, "create", "Create a simulated board in a folder", create);
    creating.add_option("DIR", createWords.folder, "A new or empty folder")
        ->check(notEmpty())
        ->type_name("")
        ->required();

    const auto [pressing, pressWords] = addCommand<PressWords>(
        sim, options, "press", "Press the button of the simulated board that --board names", press);
    pressing.add_option("--for", pressWords.seconds, "How long to hold it; default 0.1 seconds")
        ->check(seconds())
        ->option_text("SECONDS");
}

} // namespace boardctl
