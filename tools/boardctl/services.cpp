#include <algorithm>
#include <chrono>
#include <iostream>
#include <optional>

#include "CommandLine.h"
#include "EventLines.h"
#include "Output.h"
#include "Progress.h"
#include "StopSignals.h"
#include "base/Error.h"
#include "base/Text.h"
#include "board/CpuMeter.h"
#include "board/EventTap.h"
#include "button/ButtonBridge.h"
#include "button/ButtonService.h"

using nlohmann::ordered_json;

namespace {

using Clock = StopSignals::Clock;

Clock::duration spanOf(double seconds) {
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

int watchButton(const Options& options, std::optional<double> seconds) {
    const BoardProfile board(options);
    if (!board.profile().button)
        throw board::Error(board.profilePath() +
                           ": the board has no button (expected a table [button])");
    board::EventQueue queue;
    const board::EventTap tap(queue);
    EventLines lines(options.json);
    std::optional<Clock::time_point> end;
    if (seconds)
        end = Clock::now() + spanOf(*seconds);
    bool hasFailed = false;
    board::withPlaceInErrors(*board.profile().button, [&](const std::string&) {
        const board::ButtonService button(*board.profile().button, queue);
        complain("watching " + board.profile().button->path + " until " +
                 (seconds ? "the time is over" : "SIGINT (Ctrl-C)"));
        for (bool isOver = false; !isOver && !hasFailed && !lines.isLost();) {
            isOver =
                StopSignals::waitUntil(end, queue.descriptor()) || (end && Clock::now() >= *end);
            const auto batch = queue.take();
            lines.print(batch);
            hasFailed = !button.isWatching();
        }
    });
    return hasFailed || (lines.isLost() && !StopSignals::isAsked()) ? FAILED : DONE;
}

int bridgeButton(const Options& options, const std::string& device, std::optional<unsigned> code) {
    // A host takes a message at once; where none is there, the bridge looks ever less often.
    constexpr auto FIRST_LOOK = std::chrono::milliseconds(2),
                   LAST_LOOK = std::chrono::milliseconds(256);
    if (options.board.empty())
        throw WrongCall("--board must say which board's button it is");
    const BoardProfile board(options);
    if (!board.profile().button)
        throw board::Error(board.profilePath() +
                           ": the board has no button (expected a table [button])");
    board::InputKey key(device, code);
    std::optional<board::ButtonBridge> bridge;
    board::withPlaceInErrors(*board.profile().button,
                             [&](const std::string& pipe) { bridge.emplace(key.events(), pipe); });
    if (options.json)
        printJson({{"event", "ready"}, {"device", device}, {"code", key.code()}}, -1);
    else
        std::cout << "key " << key.code() << " of " << board::printable(device)
                  << " presses the button\n";
    if (!flushOutput())
        return FAILED;
    auto nextLook = FIRST_LOOK;
    for (bool isOver = false; !isOver;)
        if (bridge->carry()) {
            isOver = StopSignals::waitFor(nextLook);
            nextLook = std::min(2 * nextLook, LAST_LOOK);
        } else {
            nextLook = FIRST_LOOK;
            isOver = StopSignals::waitUntil(std::nullopt, key.descriptor());
        }
    return DONE;
}

int cpu(const Options& options, double period, unsigned count) {
    board::CpuMeter meter;
    int status = DONE;
    Progress progress(count * period);
    auto next = Clock::now();
    for (unsigned i = 0; i < count; ++i) {
        next += spanOf(period);
        if (progress.waitUntil(next, count == 1 ? "measuring"
                                                : "period " + std::to_string(i + 1) + " of " +
                                                      std::to_string(count)))
            return status;
        progress.clear();
        const board::CpuReading reading = meter.next();
        if (options.json)
            printJson(toJson(reading), count == 1 ? 2 : -1);
        else if (reading.fault.empty())
            std::cout << toText(reading) << "\n";
        if (!reading.fault.empty()) {
            complain(reading.fault);
            status = FAILED;
        }
        if (!flushOutput())
            return FAILED;
    }
    return status;
}

int firmware(const Options& options, const std::string& file) {
    board::FirmwareReading reading;
    if (!file.empty()) {
        reading = board::readFirmware(file);
    } else {
        const BoardProfile board(options);
        if (!board.profile().firmware)
            throw board::Error(
                board.profilePath() +
                ": the board has no firmware information (expected a table [firmware])");
        reading = board::readFirmware(board.profile().firmware->path);
        if (!reading.fault.empty())
            reading.fault = board.profile().firmware->place + ": " + reading.fault;
    }
    if (options.json)
        printJson(toJson(reading));
    else if (reading.fault.empty())
        std::cout << board::printable(reading.version) << "\n";
    if (reading.fault.empty())
        return DONE;
    complain(reading.fault);
    return FAILED;
}

} // namespace

void addButton(CLI::App& app, Options& options) {
    auto* const button = app.add_subcommand("button", "The service button");
    button->require_subcommand(1);
    auto* const watch =
        button->add_subcommand("watch", "Show each press and release until SIGINT or SIGTERM");
    const auto end = std::make_shared<std::optional<double>>();
    watch->add_option("--for", *end, "End after this long")
        ->check(seconds())
        ->option_text("SECONDS");
    watch->callback([&options, end] {
        options.command = [&options, end] { return watchButton(options, *end); };
    });

    auto* const bridge = button->add_subcommand(
        "bridge",
        "Make a key of an input device press the button of the board, until SIGINT or SIGTERM");
    struct Words {
        std::string device;
        std::optional<unsigned> code;
    };
    const auto words = std::make_shared<Words>();
    bridge->add_option("EVENT_DEVICE", words->device, "The input device, such as /dev/input/event0")
        ->check(notEmpty())
        ->required()
        ->type_name("");
    bridge->add_option("--code", words->code, "The key's code; without this the device's only key")
        ->transform(decimal(0, 767))
        ->option_text("N");
    bridge->callback([&options, words] {
        options.command = [&options, words] {
            return bridgeButton(options, words->device, words->code);
        };
    });
}

void addCpu(CLI::App& app, Options& options) {
    auto* const command = app.add_subcommand("cpu", "Measure how busy the processors are");
    struct Words {
        double period = 1;
        unsigned count = 1;
    };
    const auto words = std::make_shared<Words>();
    command->add_option("--period", words->period, "How long a period is; 1 second without this")
        ->check(seconds(0.1, 86400))
        ->option_text("SECONDS");
    command->add_option("--count", words->count, "How many periods; 1 without this")
        ->transform(decimal(1, 1000000000))
        ->option_text("N");
    command->callback([&options, words] {
        options.command = [&options, words] { return cpu(options, words->period, words->count); };
    });
}

void addFirmware(CLI::App& app, Options& options) {
    auto* const command = app.add_subcommand("firmware", "Show the version of the firmware image");
    const auto file = std::make_shared<std::string>();
    command->add_option("FILE", *file, "The information file; without it the board's own")
        ->check(notEmpty())
        ->type_name("");
    command->callback([&options, file] {
        options.command = [&options, file] { return firmware(options, *file); };
    });
}
