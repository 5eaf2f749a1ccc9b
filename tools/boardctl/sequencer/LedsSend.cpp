#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "base/Error.h"
#include "leds/LedPipe.h"
#include "leds/LedRow.h"
#include "output/Json.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/Help.h"
#include "program/WordChecks.h"
#include "sequencer/LedTables.h"

namespace boardctl {

namespace {

struct SendWords {
    std::string word1, word2;
    std::optional<std::int32_t> number;
};

/// The board that the call names; null if it names none.
std::unique_ptr<BoardProfile> namedBoard(const Options& options) {
    try {
        return std::make_unique<BoardProfile>(options);
    } catch (const WrongCall&) {
        return nullptr;
    }
}

int send(const Options& options, const SendWords& words) {
    std::string line;
    try {
        line = board::ledLine(words.word1, words.word2, words.number);
    } catch (const std::invalid_argument& error) {
        throw WrongCall(error.what());
    }
    if (const auto board = namedBoard(options))
        if (!board::hasRow(ledTablesOf(*board), words.word1, words.word2, words.number))
            throw board::Error(board->profilePath() + ": no row of [leds] matches '" + line +
                               "', so it was not sent");
    board::sendLedLine(line);
    if (options.json)
        printJson({{"sent", line}});
    return DONE;
}

} // namespace

void addLedsSend(CLI::App& leds, Options& options) {
    const auto [command, words] = addCommand<SendWords>(
        leds, options, "send", "Write a line to the pipe of the running LED service", send);
    command.add_option("WORD1", words.word1, "The line's first word")->required()->type_name("");
    command.add_option("WORD2", words.word2, "The line's second word")->required()->type_name("");
    command.add_option("NUMBER", words.number, "Optional number; default 0")
        ->transform(decimal(INT32_MIN, INT32_MAX))
        ->type_name("");
    addExamples(command, {"leds send system ready", "leds send system boot 1"});
}

} // namespace boardctl
