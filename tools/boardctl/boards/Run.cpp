#include <algorithm>
#include <chrono>
#include <optional>

#include "base/Error.h"
#include "base/Notification.h"
#include "board/CpuMeter.h"
#include "board/EventTap.h"
#include "board/Report.h"
#include "board/Services.h"
#include "boards/Tour.h"
#include "output/EventLines.h"
#include "output/Readings.h"
#include "output/ReportRows.h"
#include "output/Rows.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/StopSignals.h"
#include "program/WordChecks.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

using Clock = StopSignals::Clock;

struct RunWords {
    std::optional<double> seconds;
    bool tour = false;
    bool panel = false;
};

/// A board that is hosted, and what it tells while it is.
class Run {
public:
    Run(const Options& options, const RunWords& words)
        : m_words(words), m_showsLeds(words.panel || words.tour),
          m_drawsPanel(m_showsLeds && !options.json && Panel::isPossible()),
          m_lines(options.json, m_drawsPanel ? &m_panel : nullptr), m_tap(m_queue),
          m_board(options) {}

    int run() {
        const auto start = Clock::now();
        m_lines.print(
            "board",
            (m_board.isSimulated() ? "a simulated board, made for this run: " : "board ") +
                m_board.profilePath(),
            {{"profile", m_board.profilePath()}, {"simulated", m_board.isSimulated()}});
        showDevices();
        showReport();
        showFirmware();
        {
            const board::Services services(m_board.profile(), m_showsLeds, m_queue);
            showServices(services);
            m_lines.print("ready", "ready");
            notify("READY=1");
            goOn(services, start);
            if (m_drawsPanel)
                m_panel.clear();
            notify("STOPPING=1");
        }
        m_lines.print(m_queue.take()); // what came while they ended
        if (!m_lines.isLost())
            m_lines.print("stopped", "stopped");
        return m_lines.isLost() && !StopSignals::isAsked() ? FAILED : DONE;
    }

private:
    void showDevices() {
        for (const board::Device& device : m_board.host().devices()) {
            if (device.kind == "descriptor")
                continue; // loading it tells more
            if (!device.fault.empty())
                m_lines.fault(
                    (device.kind == "preferences" ? device.kind
                                                  : device.kind + " '" + device.name + "'") +
                        ": " + device.fault,
                    {{"kind", device.kind}, {"name", device.name}, {"error", device.fault}});
            else if (!device.endpoint.empty())
                m_lines.print("connected",
                              device.kind + " '" + device.name + "': connected to '" +
                                  device.endpoint + "', " + device.description + ", device file " +
                                  device.path,
                              {{"kind", device.kind},
                               {"name", device.name},
                               {"endpoint", device.endpoint},
                               {"device", device.path},
                               {"description", device.description}});
        }
    }

    /// Loads the descriptor, settles the capacity and shows the whole information dump.
    void showReport() {
        const board::Report report = board::makeReport(m_board.host());
        for (const board::DriverReport& driver : report.drivers)
            if (!driver.fault.empty() && (driver.name == board::DESCRIPTOR_DRIVER ||
                                          driver.fault != m_board.host().faultOf(driver.name)))
                m_lines.fault("driver '" + driver.name + "': " + driver.fault,
                              {{"name", driver.name}, {"error", driver.fault}});
        const auto isUnread = [](const board::DriverReport& driver) {
            return driver.name == board::DESCRIPTOR_DRIVER && !driver.fault.empty();
        };
        if (m_board.host().descriptor() &&
            std::none_of(report.drivers.begin(), report.drivers.end(), isUnread)) {
            CBoardDescr& descriptor = *m_board.host().descriptor();
            const unsigned tags =
                descriptor.getTags().size() - descriptor.getNumberOfTag(0); // terminators
            m_lines.print("descriptor", "descriptor: " + std::to_string(tags) + " tags",
                          {{"tags", tags}});
        }
        const InfoContainer dump = dumpOf(report);
        for (const auto& row : dump.getRows())
            m_lines.print(
                "row",
                std::string(2 * (std::size_t{row.level} + 1), ' ') + textOf(row.key) +
                    (row.value.isEmpty() ? "" : ": " + textOf(row.value)),
                {{"level", row.level}, {"key", textOf(row.key)}, {"value", textOf(row.value)}});
    }

    void showFirmware() {
        if (!m_board.profile().firmware)
            return;
        const board::FirmwareReading firmware =
            board::readFirmware(m_board.profile().firmware->path);
        if (firmware.fault.empty())
            m_lines.print("firmware", "firmware: " + firmware.version, toJson(firmware));
        else
            m_lines.fault("firmware: " + m_board.profile().firmware->place + ": " + firmware.fault,
                          {{"kind", "firmware"}, {"error", firmware.fault}});
    }

    void showServices(const board::Services& services) {
        for (const board::Services::Fault& fault : services.faults())
            m_lines.fault(fault.kind + ": " + fault.text,
                          {{"kind", fault.kind}, {"error", fault.text}});
        if (services.leds() && services.leds()->writers()) {
            const std::string writers = *services.leds()->writers();
            m_lines.print("leds",
                          "leds: commands are taken from " + std::string(board::LED_PIPE) +
                              ", which " + writers + " may write",
                          {{"pipe", board::LED_PIPE}, {"writers", writers}});
            const std::string risk = board::ledPipeRisk();
            if (!risk.empty())
                m_lines.fault("leds: " + risk, {{"kind", "leds"}, {"error", risk}});
        }
        if (services.watchesButton())
            m_lines.print("button", "button: watching " + m_board.profile().button->path,
                          {{"device", m_board.profile().button->path}});
    }

    void notify(const char* state) {
        try {
            if (m_isNotifying)
                board::notifyInitSystem(state);
        } catch (const board::Error& error) {
            m_isNotifying = false;
            m_lines.fault(error.what(), {{"error", error.what()}});
        }
    }

    void goOn(const board::Services& services, Clock::time_point start) {
        m_nextCpu = Clock::now() + CPU_PERIOD;
        const TourStage stage{m_board, m_lines, services.leds() && services.leds()->writers(),
                              services.watchesButton(), [&](std::chrono::milliseconds span) {
                                  return watch(services, Clock::now() + span);
                              }};
        if (m_words.tour && !playTour(stage))
            return;
        std::optional<Clock::time_point> end;
        if (m_words.seconds)
            end = start + StopSignals::spanOf(*m_words.seconds);
        if (!m_words.tour || end)
            watch(services, end);
    }

    /// Shows what happens until `end`. True where a signal, or the end of all output, asks to stop.
    bool watch(const board::Services& services, std::optional<Clock::time_point> end) {
        while (!m_lines.isLost()) {
            const auto next = end ? std::min(*end, m_nextCpu) : m_nextCpu;
            const bool isAsked = StopSignals::waitUntil(next, m_queue.descriptor());
            m_lines.print(m_queue.take());
            if (Clock::now() >= m_nextCpu)
                showCpu();
            if (m_drawsPanel && services.leds())
                m_panel.draw(services.leds()->states());
            if (isAsked)
                return true;
            if (end && Clock::now() >= *end)
                return m_lines.isLost();
        }
        return true;
    }

    void showCpu() {
        m_nextCpu = std::max(m_nextCpu + CPU_PERIOD, Clock::now());
        const board::CpuReading cpu = m_meter.next();
        m_lines.printTimed("cpu", "CPU load " + (cpu.fault.empty() ? toText(cpu) : cpu.fault),
                           toJson(cpu));
    }

    static constexpr auto CPU_PERIOD = std::chrono::seconds(5);

    const RunWords m_words;
    const bool m_showsLeds; ///< the tour shows them too
    const bool m_drawsPanel;
    bool m_isNotifying = true; ///< until it fails once
    Panel m_panel;
    EventLines m_lines;
    board::EventQueue m_queue;
    const board::EventTap m_tap;
    board::CpuMeter m_meter;
    Clock::time_point m_nextCpu;
    const Board m_board;
};

int run(const Options& options, const RunWords& words) {
    return Run(options, words).run();
}

} // namespace

void addRun(CLI::App& app, Options& options) {
    const auto [command, words] = addCommand<RunWords>(
        app, options, "run",
        "Host the board until SIGINT or SIGTERM: show how it comes up and what happens", run);
    command.add_option("--for", words.seconds, "End after this long")
        ->check(seconds())
        ->option_text("SECONDS");
    command.add_flag("--tour", words.tour,
                     "Play a tour of everything that the board has, then end");
    command.add_flag(
        "--panel", words.panel,
        "Show the LEDs: live on one line of a terminal, elsewhere each change as an event");
}

} // namespace boardctl
