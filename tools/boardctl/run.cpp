#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <iostream>
#include <optional>

#include "CommandLine.h"
#include "Output.h"
#include "Report.h"

using nlohmann::ordered_json;

namespace {

using Clock = std::chrono::steady_clock;

/// SIGINT and SIGTERM, taken here alone and one after the other: blocked everywhere, waited for in one place.
class StopSignals {
public:
    StopSignals() {
        sigemptyset(&m_signals);
        sigaddset(&m_signals, SIGINT);
        sigaddset(&m_signals, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
    }

    /// Waits until `end`, for ever without one. True where a signal ended the wait: it was the wish to stop.
    bool waitUntil(std::optional<Clock::time_point> end) const {
        for (;;) {
            int signal;
            if (!end) {
                signal = sigwaitinfo(&m_signals, nullptr);
            } else {
                using std::chrono::nanoseconds;
                const auto left =
                    std::max(nanoseconds(0), std::chrono::duration_cast<nanoseconds>(*end - Clock::now()));
                timespec timeout{};
                timeout.tv_sec = static_cast<time_t>(left.count() / 1000000000);
                timeout.tv_nsec = static_cast<long>(left.count() % 1000000000);
                signal = sigtimedwait(&m_signals, nullptr, &timeout);
            }
            if (signal > 0)
                return true;
            if (errno == EAGAIN)
                return false;
        }
    }

private:
    sigset_t m_signals;
};

/// Prints what happens, a line each: text for people, or a JSON document a line.
class Events {
public:
    explicit Events(bool json) : m_json(json) {}

    /// `text` for people; for programs `event` and the fields.
    void print(const char* event, const std::string& text,
               const ordered_json& fields = ordered_json::object()) {
        if (m_json) {
            ordered_json line = {{"event", event}};
            line.update(fields);
            printJson(line, -1);
        } else {
            std::cout << text << "\n";
        }
        std::cout.flush(); // somebody watches
    }

private:
    const bool m_json;
};

void showDevices(const Board& board, Events& events) {
    for (const board::Device& device : board.host().devices()) {
        if (device.kind == "descriptor")
            continue;
        if (!device.fault.empty()) {
            events.print("fault", device.kind + " '" + device.name + "': " + device.fault,
                         {{"kind", device.kind}, {"name", device.name}, {"error", device.fault}});
            continue;
        }
        const board::FanReading fan = board::readFan(board.host(), device.name);
        events.print("connected",
                     device.kind + " '" + device.name + "': connected to '" + device.endpoint + "', " +
                         fan.description + ", device file " + device.path + ", speed " +
                         board::speedName(fan.speed),
                     {{"kind", device.kind},
                      {"name", device.name},
                      {"endpoint", device.endpoint},
                      {"device", device.path},
                      {"description", fan.description},
                      {"speed", board::speedName(fan.speed)}});
    }
}

void showDescriptor(const Board& board, Events& events) {
    if (!board.host().descriptor())
        return;
    const std::string fault = board::loadDescriptor(board.host());
    const CBoardDescr& descriptor = *board.host().descriptor();
    if (!fault.empty())
        events.print("fault", "descriptor: " + fault, {{"kind", "descriptor"}, {"error", fault}});
    events.print("descriptor", "descriptor: " + std::to_string(descriptor.getTags().size()) + " tags",
                 {{"tags", descriptor.getTags().size()}});
    InfoContainer rows;
    descriptor.getInfo(rows, 2, 0, 0, 0, String::EMPTY());
    for (const auto& row : rows.getRows())
        if (row.level > 0)
            events.print("tag", "  " + printable(row.key) + ": " + printable(row.value),
                         {{"key", std::string(row.key.c_str(), row.key.length())},
                          {"value", std::string(row.value.c_str(), row.value.length())}});
}

/// Sets a fan and tells what came of it.
void stepFan(const Board& board, const std::string& name, IFanControl::FanSpeed speed, Events& events) {
    const board::FanReading reading = board::setFan(board.host(), name, speed);
    std::string seen = reading.fault;
    if (seen.empty())
        seen = std::string("reads back ") + board::speedName(reading.speed);
    if (board.isSimulated())
        seen =
            "the device file holds " + std::string(board.scratch().board().fanRecord().c_str()) + ", " + seen;
    ordered_json fields = fanToJson(reading);
    fields["requested"] = board::speedName(speed);
    events.print("fan", "fan '" + name + "': set to " + board::speedName(speed) + ", " + seen, fields);
}

/// Steps each fan through its speeds, slowly enough to follow, and gives it back its own. False where a
/// signal broke it off.
bool playTour(const Board& board, const StopSignals& signals, Events& events) {
    constexpr auto PAUSE = std::chrono::milliseconds(500);
    for (const board::Device& device : board.host().devices()) {
        if (device.kind != "fan" || !device.fault.empty())
            continue;
        const auto former = board::readFan(board.host(), device.name).speed;
        bool stopped = false;
        for (const auto speed : {IFanControl::FAN_SPEED_LOW, IFanControl::FAN_SPEED_HIGH,
                                 IFanControl::FAN_SPEED_FULL, IFanControl::FAN_SPEED_OFF}) {
            stepFan(board, device.name, speed, events);
            stopped = signals.waitUntil(Clock::now() + PAUSE);
            if (stopped)
                break;
        }
        stepFan(board, device.name, former, events); // as it was before the tour
        if (stopped)
            return false;
    }
    return true;
}

int run(const Options& options, std::optional<double> seconds, bool tour) {
    const StopSignals signals; // before any thread exists: each inherits the mask
    const auto start = Clock::now();
    Events events(options.json);

    const Board board(options);
    events.print("board",
                 (board.isSimulated() ? "a simulated board, made for this run: " : "board ") +
                     board.profilePath(),
                 {{"profile", board.profilePath()}, {"simulated", board.isSimulated()}});
    showDevices(board, events);
    showDescriptor(board, events);
    events.print("ready", "ready");

    const bool goOn = !tour || playTour(board, signals, events);
    std::optional<Clock::time_point> end;
    if (seconds)
        end = start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(*seconds));
    if (goOn && (seconds || !tour))
        signals.waitUntil(end);
    events.print("stopped", "stopped");
    return DONE;
}

} // namespace

void addRun(CLI::App& app, Options& options) {
    auto* const command =
        app.add_subcommand("run", "Host the board until SIGINT or SIGTERM and show how it comes up");
    struct Words {
        double seconds = 0;
        bool tour = false;
    };
    const auto words = std::make_shared<Words>();
    constexpr double YEAR = 366.0 * 86400;
    const auto* const limit = command->add_option("--for", words->seconds, "End after this long")
                                  ->check(CLI::Range(0.0, YEAR))
                                  ->type_name("SECONDS");
    command->add_flag("--tour", words->tour, "Play a tour of the board's devices, then end");
    command->callback([&options, words, limit] {
        const auto seconds = limit->count() ? std::optional<double>(words->seconds) : std::nullopt;
        options.command = [&options, words, seconds] { return run(options, seconds, words->tour); };
    });
}
