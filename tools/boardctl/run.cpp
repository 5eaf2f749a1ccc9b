#include <chrono>
#include <iostream>
#include <optional>

#include "CommandLine.h"
#include "Output.h"
#include "Report.h"
#include "StopSignals.h"

using nlohmann::ordered_json;

namespace {

using Clock = StopSignals::Clock;

/// Prints what happens, a line each: text for people, or a JSON document a line. Faults go to standard error
/// too, which is where people see them.
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
            std::cout << printable(text) << "\n";
        }
        // Somebody watches; a watcher that went away is the end.
        m_isLost = m_isLost || !flushOutput();
    }

    void fault(const std::string& text, const ordered_json& fields) {
        if (m_json)
            print("fault", text, fields);
        complain(text);
    }

    bool isLost() const { return m_isLost; }

private:
    const bool m_json;
    bool m_isLost = false;
};

void showDevices(const Board& board, Events& events) {
    for (const board::Device& device : board.host().devices()) {
        if (device.kind == "descriptor")
            continue; // loading it tells more
        if (!device.fault.empty())
            events.fault(device.kind + " '" + device.name + "': " + device.fault,
                         {{"kind", device.kind}, {"name", device.name}, {"error", device.fault}});
        else if (!device.endpoint.empty())
            events.print("connected",
                         device.kind + " '" + device.name + "': connected to '" + device.endpoint + "', " +
                             device.description + ", device file " + device.path,
                         {{"kind", device.kind},
                          {"name", device.name},
                          {"endpoint", device.endpoint},
                          {"device", device.path},
                          {"description", device.description}});
    }
}

/// Loads the descriptor, settles the capacity and shows the whole information dump.
void showReport(const Board& board, Events& events) {
    const board::Report report = board::makeReport(board.host());
    for (const board::DriverReport& driver : report.drivers)
        if (!driver.fault.empty() && driver.fault != board.host().faultOf(driver.name))
            events.fault("driver '" + driver.name + "': " + driver.fault,
                         {{"name", driver.name}, {"error", driver.fault}});
    if (board.host().descriptor()) {
        const unsigned tags = board.host().descriptor()->getTags().size();
        events.print("descriptor", "descriptor: " + std::to_string(tags) + " tags", {{"tags", tags}});
    }
    const InfoContainer dump = dumpOf(report);
    for (const auto& row : dump.getRows())
        events.print("row",
                     std::string(2 * (std::size_t{row.level} + 1), ' ') + textOf(row.key) +
                         (row.value.isEmpty() ? "" : ": " + textOf(row.value)),
                     {{"level", row.level}, {"key", textOf(row.key)}, {"value", textOf(row.value)}});
}

/// Sets a fan and tells what came of it.
void stepFan(const Board& board, const std::string& name, IFanControl::FanSpeed speed, Events& events) {
    const board::FanReading reading = board::setFan(board.host(), name, speed);
    std::string seen = reading.fault;
    if (seen.empty())
        seen = std::string("reads back ") + board::speedName(reading.speed);
    if (board.isSimulated())
        seen = "the device file holds " + std::string(board.simulated().fanRecord().c_str()) + ", " + seen;
    ordered_json fields = toJson(reading);
    fields["requested"] = board::speedName(speed);
    events.print("fan", "fan '" + name + "': set to " + board::speedName(speed) + ", " + seen, fields);
}

/// Steps each fan through its speeds, slowly enough to follow, and gives it back its own. False where a
/// signal broke it off.
bool playTour(const Board& board, Events& events) {
    constexpr auto PAUSE = std::chrono::milliseconds(500);
    for (const board::Device& device : board.host().devices()) {
        if (device.kind != "fan" || !device.fault.empty())
            continue;
        const auto former = board::readFan(board.host(), device.name).speed;
        bool stopped = false;
        for (const auto speed : {IFanControl::FAN_SPEED_LOW, IFanControl::FAN_SPEED_HIGH,
                                 IFanControl::FAN_SPEED_FULL, IFanControl::FAN_SPEED_OFF}) {
            stepFan(board, device.name, speed, events);
            stopped = events.isLost() || StopSignals::waitFor(PAUSE);
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
    const auto start = Clock::now();
    Events events(options.json);

    const Board board(options);
    events.print("board",
                 (board.isSimulated() ? "a simulated board, made for this run: " : "board ") +
                     board.profilePath(),
                 {{"profile", board.profilePath()}, {"simulated", board.isSimulated()}});
    showDevices(board, events);
    showReport(board, events);
    events.print("ready", "ready");

    const bool goOn = !tour || playTour(board, events);
    std::optional<Clock::time_point> end;
    if (seconds)
        end = start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(*seconds));
    if (goOn && !events.isLost() && (seconds || !tour))
        StopSignals::waitUntil(end);
    if (!events.isLost())
        events.print("stopped", "stopped");
    return events.isLost() ? FAILED : DONE;
}

} // namespace

void addRun(CLI::App& app, Options& options) {
    auto* const command =
        app.add_subcommand("run", "Host the board until SIGINT or SIGTERM and show how it comes up");
    struct Words {
        std::optional<double> seconds;
        bool tour = false;
    };
    const auto words = std::make_shared<Words>();
    command->add_option("--for", words->seconds, "End after this long")
        ->check(seconds())
        ->option_text("SECONDS");
    command->add_flag("--tour", words->tour, "Play a tour of the board's devices, then end");
    command->callback([&options, words] {
        options.command = [&options, words] { return run(options, words->seconds, words->tour); };
    });
}
