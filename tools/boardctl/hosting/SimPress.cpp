#include <string>

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

struct PressWords {
    double seconds = 0.1;
};

int press(const Options& options, const PressWords& words) {
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

void addSimPress(CLI::App& sim, Options& options) {
    const auto [command, words] = addCommand<PressWords, press>(
        sim, options, "press", "Press the button of a simulated board that is hosted");
    command.add_option("--for", words.seconds, "How long to hold it; default 0.1 seconds")
        ->check(seconds())
        ->option_text("SECONDS");
}

} // namespace boardctl
