#include <cmath>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "base/File.h"
#include "base/Result.h"
#include "leds/LedLine.h"
#include "leds/preview/LedJson.h"
#include "leds/preview/LedPage.h"
#include "leds/preview/LedPicture.h"
#include "leds/preview/LedPreview.h"
#include "leds/preview/LedScript.h"
#include "leds/preview/LedText.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/Help.h"
#include "program/WordChecks.h"
#include "sequencer/LedPlayer.h"
#include "sequencer/LedTables.h"

namespace boardctl {

namespace {

constexpr unsigned MOST_PAGE_TICKS = 20000;

struct PreviewWords {
    std::optional<unsigned> ticks;
    std::optional<double> seconds;  ///< --for
    std::vector<std::string> lines; ///< "TICK LINE" or "TIME LINE"
    std::string script;             ///< a file with such lines
    bool plays = false;
    std::optional<double> speed;
};

/// Warns of ticks with too many bytes: a board reads MAX_LED_LINE bytes per tick and cuts a line in
/// two at that limit. `lines` are ordered by tick.
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

void warnOfLines(const board::LedWaves& waves) {
    warnOfCuts(waves.lines);
    for (const board::LedLine& line : waves.lines) {
        if (line.tick >= waves.ticks)
            complain("tick " + std::to_string(line.tick) + " is after the last one: '" + line.line +
                     "' has no effect");
        if (!line.row)
            complain("'" + line.line + "' matches no row of the table and has no effect");
    }
}

void checkWords(const Options& options, const PreviewWords& words) {
    if (words.speed && !words.plays)
        throw WrongCall("--speed works only with --play");
    if (words.plays && (options.json || options.svg || options.html))
        throw WrongCall("--play prints text (expected no --format)");
}

unsigned ticksOf(const PreviewWords& words, std::uint32_t tickMs) {
    constexpr unsigned USUAL = 100;
    constexpr double MS_A_SECOND = 1000;
    if (!words.seconds)
        return words.ticks.value_or(USUAL);
    const double ticks = std::ceil(*words.seconds * MS_A_SECOND / std::max(tickMs, 1U));
    if (ticks < 1 || ticks > board::MOST_PREVIEW_TICKS)
        throw WrongCall(String::format("--for: %g seconds are %.0f ticks of %u ms (expected 1 to "
                                       "%u)",
                                       *words.seconds, ticks, tickMs, board::MOST_PREVIEW_TICKS)
                            .c_str());
    return static_cast<unsigned>(ticks);
}

/// The lines of the call and of its script, in this order.
std::vector<board::TimedLedLine> linesOf(const PreviewWords& words) {
    constexpr std::size_t MOST_BYTES = std::size_t{1024} * 1024;
    std::vector<board::TimedLedLine> lines;
    for (const std::string& text : words.lines)
        lines.push_back(*board::parseTimedLine(text)); // the option's check has accepted it
    if (!words.script.empty()) {
        const std::string text = board::readFile(words.script, MOST_BYTES);
        for (board::TimedLedLine& line : board::parseLedScript(text, words.script))
            lines.push_back(std::move(line));
    }
    return lines;
}

/// Prints each section as soon as it is known, because a long preview may not fit into memory.
void printSections(const board::LedSequencerProfile& profile, unsigned ticks,
                   std::vector<board::LedLine> lines) {
    board::LedPreviewRun run(profile, ticks, std::move(lines));
    const std::vector<board::LedWave>& leds = run.waves().leds;
    warnOfLines(run.waves());
    board::LedSections sections(run.waves());
    for (unsigned tick = 0; tick < ticks && std::cout;) {
        std::vector<std::string> waves(leds.size());
        const unsigned end = std::min(ticks, tick + board::LedSections::TICKS);
        for (; tick < end; ++tick) {
            const std::uint32_t lit = run.next();
            for (std::size_t i = 0; i < leds.size(); ++i)
                waves[i] += (lit & leds[i].mask) != 0 ? '1' : '0';
        }
        std::cout << sections.next(std::move(waves));
    }
}

int preview(const Options& options, const PreviewWords& words) {
    checkWords(options, words);
    const std::vector<board::TimedLedLine> timed = linesOf(words);
    const BoardProfile board(options);
    const board::LedSequencerProfile& profile = ledTablesOf(board);
    std::vector<board::LedLine> lines;
    for (const board::TimedLedLine& line : timed)
        lines.push_back(board::atTick(line, std::max(profile.tickMs, 1U)));
    const unsigned ticks = ticksOf(words, profile.tickMs);
    if (options.html && ticks > MOST_PAGE_TICKS)
        throw WrongCall("--format html: " + std::to_string(ticks) + " ticks (expected at most " +
                        std::to_string(MOST_PAGE_TICKS) + ": a browser can't hold more)");
    if (!words.plays && !options.json && !options.html && !options.svg) {
        printSections(profile, ticks, std::move(lines));
        return DONE;
    }
    board::LedWaves waves = board::previewLeds(profile, ticks, std::move(lines));
    warnOfLines(waves);
    if (words.plays)
        return playLeds(waves, words.speed.value_or(1));
    if (options.json)
        printJson(board::toJson(std::move(waves)));
    else if (options.html)
        std::cout << board::ledsToHtml(profile, waves,
                                       options.sim ? "a simulated board" : //
                                           board.profilePath());
    else
        std::cout << board::ledsToSvg(waves);
    return DONE;
}

} // namespace

void addLedsPreview(CLI::App& leds, Options& options) {
    const auto [command, words] = addCommand<PreviewWords, preview>(
        leds, options, "preview",
        "Show what the LEDs would do: as waveforms, a picture (svg), a page (html), or played");
    CLI::Option* const ticks =
        command.add_option("--ticks", words.ticks, "Number of ticks; default 100")
            ->transform(decimal(1, board::MOST_PREVIEW_TICKS))
            ->option_text("1..1000000");
    command.add_option("--for", words.seconds, "The same in seconds, rounded up to a tick")
        ->check(seconds())
        ->excludes(ticks)
        ->option_text("SECONDS");
    command
        .add_option("--at", words.lines,
                    "Pass LINE to the sequencer just before the output of that tick, or of the "
                    "first tick at that time (2.5s, 300ms) or later; may be repeated")
        ->allow_extra_args(false)
        ->check(CLI::Validator(
            [](const std::string& text) {
                const auto line = board::parseTimedLine(text);
                return line ? std::string() : line.fault();
            },
            ""))
        ->option_text("\"TICK|TIME LINE\"");
    command
        .add_option("--script", words.script,
                    "Pass the lines of FILE, each with a tick or a time before it; lines that "
                    "begin with # are comments")
        ->check(notEmpty())
        ->type_name("FILE");
    command.add_flag("--play", words.plays,
                     "Play in real time: live on one line of a terminal, otherwise each change");
    command
        .add_option("--speed", words.speed,
                    "Speed of --play, in multiples of the board's, 0.01 to 1000; default 1")
        ->check(CLI::Validator(
            [](const std::string& text) {
                double value = 0;
                return CLI::detail::lexical_cast(text, value) && value >= SLOWEST_PLAY &&
                               value <= FASTEST_PLAY
                           ? std::string()
                           : "'" + text + "' (expected a number, 0.01 to 1000)";
            },
            ""))
        ->option_text("FACTOR");
    addExamples(command, {"leds preview --at \"3 search start\" --at \"40 search stop\"",
                          "leds preview --ticks 60 --at \"1 line ring\" --format svg >ring.svg",
                          "leds preview --for 20 --script demo.leds --format html >demo.html",
                          "leds preview --at \"0.5s line ring\" --play --speed 2"});
}

} // namespace boardctl
