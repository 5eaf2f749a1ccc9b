#include <optional>
#include <string>

#include "board/EventTap.h"
#include "button/ButtonService.h"
#include "output/EventLines.h"
#include "output/Messages.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/StopSignals.h"
#include "program/WordChecks.h"

namespace boardctl {

namespace {

struct WatchWords {
    std::optional<double> seconds;
};

int watchButton(const Options& options, const WatchWords& words) {
    StopSignals::expectAsEnd();
    const BoardProfile board(options);
    const board::NamedPath& device = board.button();
    board::EventQueue queue;
    const board::EventTap tap(queue);
    EventLines lines(options.json);
    const auto end = StopSignals::endAfter(words.seconds);
    bool hasFailed = false;
    board::withPlaceInErrors(device, [&](const std::string&) {
        const board::ButtonService button(device, queue);
        complain("watching " + device.path + " until " +
                 (words.seconds ? "the time is up" : "SIGINT (Ctrl-C)"));
        for (bool isOver = false; !isOver && !hasFailed && !lines.isLost();) {
            isOver = StopSignals::waitUntil(end, queue.descriptor()) ||
                     (end && StopSignals::Clock::now() >= *end);
            const auto batch = queue.take();
            lines.print(batch);
            hasFailed = !button.isWatching();
        }
    });
    return hasFailed || (lines.isLost() && !StopSignals::isAsked()) ? FAILED : DONE;
}

} // namespace

void addButtonWatch(CLI::App& button, Options& options) {
    const auto [command, words] = addCommand<WatchWords, watchButton>(
        button, options, "watch", "Show each press and release until a signal ends it");
    command.add_option("--for", words.seconds, "End after this time")
        ->check(seconds())
        ->option_text("SECONDS");
}

} // namespace boardctl
