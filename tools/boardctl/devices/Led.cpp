#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "DRIVER.h"
#include "IDriverRepository.h"
#include "ILedControl.h"
#include "base/EndingSignals.h"
#include "base/Error.h"
#include "base/Result.h"
#include "base/Suggestion.h"
#include "board/Readings.h"
#include "output/Messages.h"
#include "output/Progress.h"
#include "output/Readings.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/Help.h"
#include "program/StopSignals.h"
#include "program/WordChecks.h"

namespace boardctl {

namespace {

struct LedWords {
    std::string name;
    std::vector<std::string> action; ///< what follows the name
    std::optional<double> seconds;   ///< --for
};

constexpr unsigned OFF = 0;
constexpr unsigned LIT = 1;
constexpr unsigned SECOND_LIT = 2;

TYPPtr<ILedControl> findLed(const Board& board, const std::string& name) {
    board.devices(board::DeviceKind::LED,
                  name); // throws, with the LEDs to choose from, if there is no such LED
    TYPPtr<ILedControl> led;
    const XCode status = DRIVER::INSTANCE()->getInterface(name.c_str(), led);
    if (!status.isSuccess())
        throw board::Error("LED '" + name + "': " + status.getMessage().c_str());
    if (const auto fault = board.host().faultOf(name))
        throw board::Error("LED '" + name + "': " + *fault);
    return led;
}

void expectDone(const XCode& status, const std::string& name, const char* what) {
    if (!status.isSuccess())
        throw board::Error("LED '" + name + "': " + what);
}

/// The state that the LED shows now, to be restored later.
unsigned formerState(const Board& board, const std::string& name) {
    const board::LedReading former = board::readLed(board.host(), name);
    if (!former.value)
        throw board::Error("LED '" + name + "': " + former.value.fault());
    return *former.value;
}

/// Restores the previous state of the LED. The driver may have restored another one: it remembers
/// "off" if it failed to read the LED.
board::LedReading restore(const Board& board, const std::string& name, unsigned former) {
    board::LedReading shown = board::readLed(board.host(), name);
    if (!shown.value || *shown.value != former)
        shown = board::setLed(board.host(), name, former);
    return shown;
}

/// A fault unless the LED shows what was just written, lit or dark.
board::Result<void> checkShown(const XCode& written, const Board& board, const std::string& name,
                               bool lit) {
    if (!written.isSuccess())
        return board::Fault{"the state can't be written"};
    const auto isAsWritten = [lit](unsigned state) { return (state != OFF) == lit; };
    const board::LedReading shown = board::awaitLed(board.host(), name, isAsWritten);
    if (!shown.value)
        return board::Fault{shown.value.fault()};
    if (isAsWritten(*shown.value))
        return {};
    return board::Fault{"the device holds " + std::to_string(*shown.value) +
                        " after another state was written"};
}

/// Holds the overlay until a signal or the end of the time, then restores the previous state.
int holdOverlay(const Options& options, const LedWords& words) {
    if (!words.seconds)
        StopSignals::expectAsEnd();
    const Board board(options);
    const auto led = findLed(board, words.name);
    const unsigned former = formerState(board, words.name);
    expectDone(led->setLedBiStatus(1), words.name, "can't show a second lit state");
    const board::LedReading shown = board::awaitLed(
        board.host(), words.name, [](unsigned state) { return state == SECOND_LIT; });
    if (!shown.value || *shown.value != SECOND_LIT) {
        const board::EndingSignalsHeld whileRestoring;
        static_cast<void>(led->setLedBiStatus(OFF));
        static_cast<void>(
            restore(board, words.name, former)); // best effort: the failure below is what counts
        throw board::Error("LED '" + words.name + "': " +
                           (shown.value ? "the device holds " + std::to_string(*shown.value) +
                                              " after 2 was written"
                                        : shown.value.fault()));
    }
    complain("LED '" + words.name + "' shows 2 until " +
             (words.seconds ? "the time is up" : "SIGINT (Ctrl-C)"));
    StopSignals::waitUntil(StopSignals::endAfter(words.seconds));
    const board::EndingSignalsHeld whileRestoring;
    static_cast<void>(led->setLedBiStatus(OFF)); // the LED itself is checked next
    return show(std::vector{restore(board, words.name, former)}, options.json);
}

/// Ends the overlay of another process. This process does not know about it, but it can see that
/// the LED shows 2.
int endOverlay(const Options& options, const LedWords& words) {
    const Board board(options);
    board.devices(board::DeviceKind::LED, words.name);
    const board::LedReading shown = board::readLed(board.host(), words.name);
    if (!shown.value || *shown.value != SECOND_LIT)
        return show(std::vector{shown}, options.json);
    complain("LED '" + words.name + "' shows 2; switching it off");
    return show(std::vector{board::setLed(board.host(), words.name, OFF)}, options.json);
}

int blink(const Options& options, const LedWords& words, unsigned count, unsigned periodMs) {
    const Board board(options);
    const auto led = findLed(board, words.name);
    const unsigned former = formerState(board, words.name);
    expectDone(led->enableLedToggle(), words.name, "can't be toggled");
    const auto half = std::chrono::microseconds(periodMs) * 500; // half of 1000 us per ms
    bool stopped = false;
    board::Result<void> outcome;
    Progress progress(count * (periodMs / 1000.0));
    for (unsigned i = 0; i < count && !stopped; ++i)
        for (const unsigned state : {LIT, OFF}) {
            outcome = checkShown(led->setLedToggleStatus(state), board, words.name, state != OFF);
            stopped = !outcome || progress.waitUntil(StopSignals::Clock::now() + half,
                                                     "blink " + std::to_string(i + 1) + " of " +
                                                         std::to_string(count));
            if (stopped)
                break;
        }
    progress.clear();
    const board::EndingSignalsHeld whileRestoring;
    expectDone(led->disableLedToggle(), words.name, "can't restore the previous state");
    const board::LedReading shown = restore(board, words.name, former);
    if (!outcome)
        throw board::Error("LED '" + words.name + "': " + outcome.fault());
    return show(std::vector{shown}, options.json);
}

unsigned number(const std::string& word, const char* what, unsigned minimum, unsigned maximum) {
    const unsigned value = String(word.c_str()).toUInt();
    if (!isDigits(word) || value < minimum || value > maximum)
        throw WrongCall(std::string(what) + " is '" + word + "' (expected " +
                        std::to_string(minimum) + " to " + std::to_string(maximum) + ")");
    return value;
}

unsigned stateOf(const std::vector<std::string>& action) {
    const std::string& first = action[0];
    if (first == "blink")
        throw WrongCall("blink needs COUNT and PERIOD_MS, such as: blink 3 500");
    if (first == "bi")
        throw WrongCall("bi needs on or off" +
                        (action.size() > 1 ? board::didYouMean(action[1], {"on", "off"}) : ""));
    if (action.size() > 1 || !isDigits(first))
        throw WrongCall("'" + first +
                        "' is not an action (expected 0, 1, 2, 'bi on', 'bi off' or 'blink COUNT "
                        "PERIOD_MS')" +
                        board::didYouMean(first, {"bi", "blink"}));
    return number(first, "the state", OFF, SECOND_LIT);
}

int led(const Options& options, const LedWords& words) {
    const std::vector<std::string>& action = words.action;
    const bool holds = action == std::vector<std::string>{"bi", "on"};
    if (words.seconds && !holds)
        throw WrongCall("--for works only with 'bi on'");
    if (holds)
        return holdOverlay(options, words);
    if (action == std::vector<std::string>{"bi", "off"})
        return endOverlay(options, words);
    if (action.size() == 3 && action[0] == "blink") {
        constexpr unsigned MOST_BLINKS = 1000000;
        constexpr unsigned LONGEST_MS = 3600000;
        const unsigned count = number(action[1], "COUNT", 1, MOST_BLINKS);
        return blink(options, words, count, number(action[2], "PERIOD_MS", 1, LONGEST_MS));
    }
    std::optional<unsigned> state;
    if (!action.empty())
        state = stateOf(action);
    const Board board(options);
    board.devices(board::DeviceKind::LED,
                  words.name); // throws, with the LEDs to choose from, if there is no such LED
    return show(std::vector{state ? board::setLed(board.host(), words.name, *state)
                                  : board::readLed(board.host(), words.name)},
                options.json);
}

} // namespace

void addLed(CLI::App& app, Options& options) {
    const auto [command, words] = addCommand<LedWords>(
        app, options, "led",
        "Read an LED, set it and read it back, hold its bi-status overlay, or blink it", led);
    command.add_option("NAME", words.name, "The LED; `boardctl info` lists them")
        ->check(notEmpty())
        ->required()
        ->type_name("");
    command
        .add_option("ACTION", words.action,
                    "Default: read the LED. 0, 1 or 2: set this state. bi on: show 2 until SIGINT "
                    "or the end of --for, then restore the previous state. bi off: end the overlay "
                    "of another process. blink: use the driver's toggle mode")
        ->expected(0, 3)
        ->option_text("0|1|2|bi on|bi off|blink COUNT PERIOD_MS");
    command.add_option("--for", words.seconds, "End `bi on` after this time")
        ->check(seconds())
        ->option_text("SECONDS");
    addExamples(command, {"led status 1", "led status blink 3 500", "led status bi on --for 10"});
}

} // namespace boardctl
