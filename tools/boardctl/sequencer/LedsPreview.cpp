#include <iostream>
#include <string>
#include <vector>

#include "base/Result.h"
#include "leds/LedDiagram.h"
#include "leds/LedPipe.h"
#include "leds/LedPreview.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/Help.h"
#include "program/WordChecks.h"
#include "sequencer/LedTables.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

constexpr unsigned MOST_TICKS = 1000000;

struct PreviewWords {
    unsigned ticks = 100;
    std::vector<std::string> lines; ///< "TICK LINE"
};

/// Reads "TICK LINE", such as "12 system ready".
board::Result<board::LedLine> parseLine(const std::string& text) {
    const auto blank = text.find(' ');
    const std::string tick = text.substr(0, blank);
    const unsigned value = isDigits(tick) ? String(tick.c_str()).toUInt() : 0;
    if (value < 1 || value > MOST_TICKS || blank == std::string::npos)
        return board::Fault{"'" + text + "' (expected \"TICK LINE\" with a tick of 1 to " +
                            std::to_string(MOST_TICKS) + ", such as \"1 system ready\")"};
    const std::string line = text.substr(blank + 1);
    if (line.find('\n') != std::string::npos)
        return board::Fault{"'" + text + "' (expected one line; use one --at for each)"};
    if (line.size() + 1 > board::MAX_LED_LINE)
        return board::Fault{"'" + text + "' (expected a line of at most " +
                            std::to_string(board::MAX_LED_LINE - 1) +
                            " bytes: a board cuts longer ones in two)"};
    return board::LedLine{value, line};
}

/// A board reads MAX_LED_LINE bytes per tick and cuts a line in two at that limit. `lines` are in
/// order of their ticks.
void warnOfCuts(const std::vector<board::LedLine>& lines) {
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const bool isNewTick = i == 0 || lines[i].tick != lines[i - 1].tick;
        const bool fitted = bytes <= board::MAX_LED_LINE;
        bytes = (isNewTick ? 0 : bytes) + lines[i].line.size() + 1;
        if (bytes > board::MAX_LED_LINE && (isNewTick || fitted))
            complain("the lines of tick " + std::to_string(lines[i].tick) + " have more than " +
                     std::to_string(board::MAX_LED_LINE) + " bytes: a board would cut them");
    }
}

ordered_json toJson(const board::LedWaves& waves) {
    ordered_json leds = ordered_json::array();
    for (const board::LedWave& led : waves.leds)
        leds.push_back({{"mask", led.mask}, {"wave", led.wave}});
    return {{"ticks", waves.ticks}, {"leds", leds}};
}

int preview(const Options& options, const PreviewWords& words) {
    std::vector<board::LedLine> lines;
    for (const std::string& text : words.lines)
        lines.push_back(*parseLine(text)); // the option's check has accepted it
    const BoardProfile board(options);
    const board::LedWaves waves =
        board::previewLeds(ledTablesOf(board), words.ticks, std::move(lines));
    warnOfCuts(waves.lines);
    for (const board::LedLine& line : waves.lines) {
        if (line.tick >= words.ticks)
            complain("tick " + std::to_string(line.tick) + " is after the last one: '" + line.line +
                     "' has no effect");
        if (!line.namesRow)
            complain("'" + line.line + "' matches no row of the table and has no effect");
    }
    if (options.json)
        printJson(toJson(waves));
    else
        std::cout << (options.svg ? board::ledsToSvg(waves) : board::ledsToText(waves));
    return DONE;
}

} // namespace

void addLedsPreview(CLI::App& leds, Options& options) {
    const auto [command, words] = addCommand<PreviewWords>(
        leds, options, "preview", "Show what the LEDs would do, as waveforms, without waiting",
        preview);
    command.add_option("--ticks", words.ticks, "Number of ticks; default 100")
        ->transform(decimal(1, MOST_TICKS))
        ->option_text("1..1000000");
    command
        .add_option("--at", words.lines,
                    "Pass LINE to the sequencer just before that tick's output; may be repeated")
        ->allow_extra_args(false)
        ->check(CLI::Validator(
            [](const std::string& text) {
                const auto line = parseLine(text);
                return line ? std::string() : line.fault();
            },
            ""))
        ->option_text("\"TICK LINE\"");
    addExamples(command, {"leds preview --at \"3 search start\" --at \"40 search stop\"",
                          "leds preview --ticks 60 --at \"1 line ring\" --format svg >ring.svg"});
}

} // namespace boardctl
