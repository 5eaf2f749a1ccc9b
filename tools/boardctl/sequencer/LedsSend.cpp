#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "base/Error.h"
#include "leds/LedLine.h"
#include "leds/LedRow.h"
#include "output/Json.h"
#include "output/Progress.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/Help.h"
#include "program/StopSignals.h"
#include "program/WordChecks.h"
#include "sequencer/LedTables.h"

namespace boardctl {

namespace {

struct SendWords {
    std::string word1, word2;
    std::optional<std::int32_t> number;
};

/// The board that the call names; null if the call names no board.
std::unique_ptr<BoardProfile> namedBoard(const Options& options) {
    try {
        return std::make_unique<BoardProfile>(options);
    } catch (const WrongCall&) {
        return nullptr;
    }
}

/// Sends the line after the sequencer has read the lines of other senders. If that takes
/// more than LED_TURN_TICKS ticks, throws board::Error and does not send it.
void sendInTurn(const std::string& line, std::chrono::duration<double> tick,
                const std::string& group) {
    Progress progress(tick.count() * board::LED_TURN_TICKS);
    const auto pause = [&] {
        const double seconds = tick.count() / board::LED_PAUSES_PER_TICK;
        return !progress.waitUntil(StopSignals::Clock::now() + StopSignals::spanOf(seconds),
                                   "waiting until the lines of others have been read");
    };
    board::sendLedLineInTurn(line, pause, group);
}

int send(const Options& options, const SendWords& words) {
    std::string line;
    try {
        line = board::ledLine(words.word1, words.word2, words.number);
    } catch (const std::invalid_argument& error) {
        throw WrongCall(error.what());
    }
    std::uint32_t tickMs = board::LedSequencerProfile().tickMs; // the default
    std::string group;
    if (const auto board = namedBoard(options)) {
        const board::LedSequencerProfile& tables = ledTablesOf(*board);
        tickMs = tables.tickMs;
        group = tables.group;
        if (!board::hasRow(tables, words.word1, words.word2, words.number))
            throw board::Error(board->profilePath() + ": no row of [leds] matches '" + line +
                               "', so it was not sent");
    }
    sendInTurn(line, std::chrono::milliseconds(tickMs), group);
    if (options.json)
        printJson({{"sent", line}});
    return DONE;
}

} // namespace

void addLedsSend(CLI::App& leds, Options& options) {
    const auto [command, words] = addCommand<SendWords, send>(
        leds, options, "send", "Write a line to the pipe of the running LED service");
    command.add_option("WORD1", words.word1, "The line's first word")->required()->type_name("");
    command.add_option("WORD2", words.word2, "The line's second word")->required()->type_name("");
    command.add_option("NUMBER", words.number, "Optional number; default 0")
        ->transform(decimal(INT32_MIN, INT32_MAX))
        ->type_name("");
    addExamples(command, {"leds send system ready", "leds send system boot 1"});
}

} // namespace boardctl
