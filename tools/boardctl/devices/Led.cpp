#include <chrono>
#include <functional>
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
#include "base/Text.h"
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

/// The board with only one device opened: the LED that the call names.
class LedBoard : public Board {
public:
    LedBoard(const Options& options, const LedWords& words)
        : Board(options, board::DeviceKind::LED, words.name), m_name(words.name) {}

    const board::Device& device() const { return *host().find(m_name); }

    [[noreturn]] void fail(const std::string& what) const {
        throw board::Error("LED '" + m_name + "': " + what);
    }

    /// Fails if the LED has no second lit state: brightness 2 would then be just a dim light.
    void expectSecondState() const {
        if (!device().biStatus)
            fail("has one lit state only (a second one needs bi_status = true in " + profilePath() +
                 ")");
    }

    TYPPtr<ILedControl> driver() const {
        TYPPtr<ILedControl> led;
        const XCode status = DRIVER::INSTANCE()->getInterface(m_name.c_str(), led);
        if (!status.isSuccess())
            fail(status.getMessage().c_str());
        if (device().fault)
            fail(*device().fault);
        return led;
    }

    board::LedReading read() const { return board::readLed(host(), m_name); }
    board::LedReading set(unsigned state) const { return board::setLed(host(), m_name, state); }

    /// What the LED's device holds now, to be restored later.
    unsigned brightness() const {
        const board::LedReading now = read();
        if (!now.value)
            fail(now.value.fault());
        return now.brightness;
    }

    /// Writes `former` if the LED does not show it. The driver's own restore may be wrong: it
    /// remembers "off" if it failed to read the LED.
    board::LedReading restore(unsigned former) const {
        board::LedReading shown = read();
        if (!shown.value || shown.brightness != former)
            shown = board::setLedBrightness(host(), m_name, former);
        return shown;
    }

    /// Returns a fault if the attempt failed, the LED can't be read, or it does not reach a
    /// brightness that `isAsWritten` accepts.
    board::Result<void> check(const board::Attempt& attempt, const std::string& written,
                              const std::function<bool(unsigned)>& isAsWritten) const {
        if (!attempt.isDone)
            return board::Fault{"the state can't be written"};
        const board::LedReading shown = board::awaitLed(host(), m_name, isAsWritten);
        if (!shown.value)
            return board::Fault{shown.value.fault()};
        if (isAsWritten(shown.brightness))
            return {};
        return attempt.refusal(device(), std::to_string(shown.brightness), written);
    }

private:
    const std::string& m_name;
};

/// The state to request from the driver to light the LED for the `i`th time. If 1 is requested, the
/// driver itself alternates between the two lit states of an LED that has both.
unsigned litState(const board::Device& led, unsigned i) {
    return led.on != LIT && led.biStatus && i % 2 != 0 ? SECOND_LIT : led.on;
}

/// Holds the bi-status overlay until a signal arrives or the time is up, then restores the LED.
int holdOverlay(const Options& options, const LedWords& words) {
    if (!words.seconds)
        StopSignals::expectAsEnd();
    const LedBoard board(options, words);
    board.expectSecondState();
    const auto led = board.driver();
    const unsigned former = board.brightness();
    const board::Attempt attempt([&] { return led->setLedBiStatus(1); });
    const board::Result<void> outcome = board.check(
        attempt, std::to_string(SECOND_LIT), [](unsigned held) { return held == SECOND_LIT; });
    if (!outcome) {
        const board::EndingSignalsHeld whileRestoring;
        static_cast<void>(led->setLedBiStatus(OFF));
        static_cast<void>(board.restore(former)); // best effort; the fault below is reported
        board.fail(outcome.fault());
    }
    complain("LED '" + words.name + "' shows 2 until " +
             (words.seconds ? "the time is up" : "SIGINT (Ctrl-C)"));
    StopSignals::waitUntil(StopSignals::endAfter(words.seconds));
    const board::EndingSignalsHeld whileRestoring;
    static_cast<void>(led->setLedBiStatus(OFF)); // `restore` checks the LED
    return show(std::vector{board.restore(former)}, options.json);
}

/// Ends the overlay of another process. This process can see only that the LED shows 2.
int endOverlay(const Options& options, const LedWords& words) {
    const LedBoard board(options, words);
    board.expectSecondState();
    const board::LedReading shown = board.read();
    if (!shown.value || *shown.value != SECOND_LIT)
        return show(std::vector{shown}, options.json);
    complain("LED '" + words.name + "' shows 2; switching it off");
    return show(std::vector{board.set(OFF)}, options.json);
}

int blink(const Options& options, const LedWords& words, unsigned count, unsigned periodMs) {
    const LedBoard board(options, words);
    const auto led = board.driver();
    const unsigned former = board.brightness();
    if (!led->enableLedToggle().isSuccess())
        board.fail("can't be toggled");
    const auto half = std::chrono::microseconds(periodMs) * 500; // half of 1000 us per ms
    bool stopped = false;
    board::Result<void> outcome;
    Progress progress(count * (periodMs / 1000.0));
    for (unsigned i = 0; i < count && !stopped; ++i)
        for (const bool isLit : {true, false}) {
            const unsigned state = isLit ? litState(board.device(), i) : OFF;
            outcome = board.check(board::Attempt([&] { return led->setLedToggleStatus(state); }),
                                  "another state",
                                  [isLit](unsigned held) { return (held != OFF) == isLit; });
            stopped = !outcome || progress.waitUntil(StopSignals::Clock::now() + half,
                                                     "blink " + std::to_string(i + 1) + " of " +
                                                         std::to_string(count));
            if (stopped)
                break;
        }
    progress.clear();
    const board::EndingSignalsHeld whileRestoring;
    if (!led->disableLedToggle().isSuccess())
        board.fail("can't restore the previous state");
    const board::LedReading shown = board.restore(former);
    if (!outcome)
        board.fail(outcome.fault());
    return show(std::vector{shown}, options.json);
}

unsigned number(const std::string& word, const char* what, unsigned minimum, unsigned maximum) {
    const unsigned value = String(word.c_str()).toUInt();
    if (!board::isDigits(word) || value < minimum || value > maximum)
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
    if (action.size() > 1 || !board::isDigits(first))
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
    const LedBoard board(options, words);
    if (state == SECOND_LIT)
        board.expectSecondState();
    return show(std::vector{state ? board.set(*state) : board.read()}, options.json);
}

} // namespace

void addLed(CLI::App& app, Options& options) {
    const auto [command, words] = addCommand<LedWords, led>(
        app, options, "led",
        "Read an LED, set it and read it back, hold its bi-status overlay, or blink it");
    command.add_option("NAME", words.name, "The LED; `boardctl info` lists them")
        ->check(notEmpty())
        ->required()
        ->type_name("");
    command
        .add_option(
            "ACTION", words.action,
            "Default: read the LED. 0, 1 or 2: set this state; 2 needs an LED with bi_status. "
            "bi on: show 2 until SIGINT or the end of --for, then restore the previous "
            "state. bi off: end the overlay of another process. blink: use the driver's "
            "toggle mode")
        ->expected(0, 3)
        ->option_text("0|1|2|bi on|bi off|blink COUNT PERIOD_MS");
    command.add_option("--for", words.seconds, "End `bi on` after this time")
        ->check(seconds())
        ->option_text("SECONDS");
    addExamples(command, {"led status 1", "led status blink 3 500", "led status bi on --for 10"});
}

} // namespace boardctl
