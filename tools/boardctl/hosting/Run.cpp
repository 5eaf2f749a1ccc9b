#include <algorithm>
#include <chrono>
#include <optional>

#include "base/Error.h"
#include "base/Notification.h"
#include "base/Text.h"
#include "board/HostingLoop.h"
#include "board/Report.h"
#include "board/Services.h"
#include "hosting/Tour.h"
#include "output/EventLines.h"
#include "output/Prompt.h"
#include "output/Readings.h"
#include "output/ReportRows.h"
#include "output/Rows.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/StopSignals.h"
#include "program/WordChecks.h"
#include "watch/Watch.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

using Clock = StopSignals::Clock;

struct RunWords {
    std::optional<double> seconds;
    std::optional<double> cpu; ///< seconds between two lines about the load
    bool tour = false;
    bool yes = false; ///< the tour may set the fans of a real board
    bool panel = false;
};

/// Hosts a board and prints how it comes up and what happens.
class Run : private board::HostingLoop::Waiter, private board::HostingLoop::Listener {
public:
    Run(const Options& options, const RunWords& words)
        : m_words(words), m_showsLeds(words.panel || words.tour),
          m_drawsPanel(m_showsLeds && !options.json && Panel::isPossible()),
          m_lines(options.json, m_drawsPanel ? &m_panel : nullptr), m_loop(*this, *this),
          m_board(options), m_watch(m_board.host(), m_board.profile(), m_loop.events()) {}

    int run() {
        const auto start = Clock::now();
        m_lines.print("board",
                      (m_board.scratch()       ? "a simulated board, made for this run: "
                       : m_board.isSimulated() ? "simulated board "
                                               : "board ") +
                          m_board.profilePath(),
                      {{"profile", m_board.profilePath()}, {"simulated", m_board.isSimulated()}});
        try {
            hostBoard(start);
        } catch (...) {
            static_cast<void>(giveBack());
            throw;
        }
        const bool isGivenBack = giveBack();
        m_loop.passEventsOn(); // the last events of the services
        if (!m_lines.isLost())
            m_lines.print("stopped", "stopped");
        const bool isHeard = !m_lines.isLost() || StopSignals::isAsked();
        return isHeard && isGivenBack ? DONE : FAILED;
    }

private:
    void hostBoard(Clock::time_point start) {
        if (m_words.tour && !m_words.yes && !m_board.isSimulated())
            askBeforeTour();
        showDevices();
        m_watch.look();
        m_loop.passEventsOn(); // what does not work
        showReport();
        showFirmware();
        {
            const board::Services services(m_board.profile(), m_showsLeds, m_loop.events());
            m_leds = services.leds();
            showServices(services);
            m_watch.sendLedLinesTo([&](const std::string& line) { sendToLeds(services, line); });
            m_lines.print("ready", "ready");
            notify("READY=1");
            host(services, start);
            if (m_drawsPanel)
                m_panel.clear();
            notify("STOPPING=1");
            m_watch.sendLedLinesTo(nullptr);
            m_leds = nullptr;
        }
    }

    /// The tour makes fans stand still for a moment, which a real board may not bear.
    void askBeforeTour() {
        const std::vector<std::string> fans = tourFans(m_board);
        if (!fans.empty())
            expectYes("Set " + board::join(fans) + " of " + m_board.profilePath() +
                          " to each speed in turn?",
                      m_board.profilePath() + ": the tour was not played",
                      m_board.profilePath() + ": the tour sets fans of a real board, and standard "
                                              "input is not a terminal to ask on (expected -y)");
    }

    /// False if a fan that was set could not be given back.
    bool giveBack() {
        const std::vector<std::string> faults = m_board.host().giveBack();
        for (const std::string& fault : faults)
            m_lines.fault(fault, {{"kind", "fan"}, {"error", fault}});
        return faults.empty();
    }

    void showDevices() {
        for (const board::Device& device : m_board.host().devices())
            if (device.kind != board::DeviceKind::DESCRIPTOR) // the report says more about it
                showDevice(device);
    }

    void showDevice(const board::Device& device) {
        const std::string kind = board::kindName(device.kind);
        const std::string title =
            device.kind == board::DeviceKind::PREFERENCES ? kind : kind + " '" + device.name + "'";
        if (device.fault && !m_watch.watches(device.name))
            m_lines.fault(title + ": " + *device.fault,
                          {{"kind", kind}, {"name", device.name}, {"error", *device.fault}});
        else if (!device.fault && !device.endpoint.empty())
            m_lines.print("connected",
                          title + ": connected to '" + device.endpoint + "', " +
                              (device.description.empty() ? "" : device.description + ", ") +
                              "device file " + device.path,
                          {{"kind", kind},
                           {"name", device.name},
                           {"endpoint", device.endpoint},
                           {"device", device.path},
                           {"description", device.description}});
    }

    /// Loads the descriptor, determines the capacity and shows the whole report. The watch has told
    /// already which devices are gone.
    void showReport() {
        const board::Report report = board::makeReport(m_board.host());
        for (const board::DriverReport& driver : report.drivers)
            if (driver.fault && !m_watch.isGone(driver.name))
                m_lines.fault("driver '" + driver.name + "': " + *driver.fault,
                              {{"name", driver.name}, {"error", *driver.fault}});
        const auto isUnread = [](const board::DriverReport& driver) {
            return driver.name == board::DESCRIPTOR_DRIVER && driver.fault;
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
            m_lines.print("row",
                          std::string(2 * (std::size_t{row.level} + 1), ' ') +
                              toStdString(row.key) +
                              (row.value.isEmpty() ? "" : ": " + toStdString(row.value)),
                          {{"level", row.level},
                           {"key", toStdString(row.key)},
                           {"value", toStdString(row.value)}});
    }

    void showFirmware() {
        if (!m_board.profile().firmware)
            return;
        const auto firmware = board::readFirmware(*m_board.profile().firmware);
        if (firmware)
            m_lines.print("firmware", "firmware: " + firmware->version, toJson(firmware));
        else
            m_lines.fault("firmware: " + firmware.fault(),
                          {{"kind", "firmware"}, {"error", firmware.fault()}});
    }

    void showServices(const board::Services& services) {
        for (const board::Services::Failure& failure : services.failures()) {
            const std::string kind =
                failure.service == board::Services::Kind::LEDS ? "leds" : "button";
            m_lines.fault(kind + ": " + failure.text, {{"kind", kind}, {"error", failure.text}});
        }
        if (services.leds() && services.leds()->writers()) {
            const std::string writers = *services.leds()->writers();
            m_lines.print("leds",
                          "leds: commands are read from " + std::string(board::LED_PIPE) +
                              ", which " + writers + " may write",
                          {{"pipe", board::LED_PIPE}, {"writers", writers}});
            if (const auto risk = board::ledPipeRisk())
                m_lines.fault("leds: " + *risk, {{"kind", "leds"}, {"error", *risk}});
        }
        if (services.watchesButton())
            m_lines.print("button", "button: watching " + m_board.profile().button->path,
                          {{"device", m_board.profile().button->path}});
    }

    /// A line that a profile sends when an alarm begins or ends.
    void sendToLeds(const board::Services& services, const std::string& line) {
        try {
            // Somebody else may read the pipe.
            if (!services.leds() || !services.leds()->writers())
                throw board::Error("no LED service of this host takes commands");
            board::sendLedLine(line);
        } catch (const board::Error& error) {
            m_loop.events().push(
                board::event::FaultReport{"leds: '" + line + "' can't be sent: " + error.what()});
        }
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

    void host(const board::Services& services, Clock::time_point start) {
        m_loop.every(m_board.profile().watch.period, [this] { m_watch.look(); });
        if (m_words.cpu)
            m_loop.every(StopSignals::spanOf(*m_words.cpu), [this] { showLoad(m_meter.next()); });
        const TourStage stage{m_board, m_lines, services.leds() && services.leds()->writers(),
                              services.watchesButton(), [&](std::chrono::milliseconds span) {
                                  return m_loop.runUntil(Clock::now() + span);
                              }};
        if (m_words.tour && !playTour(stage))
            return;
        std::optional<Clock::time_point> end;
        if (m_words.seconds)
            end = start + StopSignals::spanOf(*m_words.seconds);
        if (!m_words.tour || end)
            static_cast<void>(m_loop.runUntil(end));
    }

    void showLoad(const board::Result<board::CpuReading>& load) {
        m_lines.printTimed("cpu", "CPU load " + (load ? toText(load) : load.fault()), toJson(load));
    }

    Clock::time_point now() override { return Clock::now(); }
    bool waitUntil(std::optional<Clock::time_point> end, int descriptor) override {
        return StopSignals::waitUntil(end, descriptor);
    }

    void onEvents(const board::EventQueue::Batch& batch) override { m_lines.print(batch); }
    void onRoundEnd() override {
        if (m_drawsPanel && m_leds)
            m_panel.draw(m_leds->states());
    }
    bool isListening() const override { return !m_lines.isLost(); }

    const RunWords m_words;
    const bool m_showsLeds; ///< the tour shows them too
    const bool m_drawsPanel;
    bool m_isNotifying = true; ///< until it has failed once
    Panel m_panel;
    EventLines m_lines;
    board::HostingLoop m_loop;
    Board m_board;
    board::Watch m_watch;
    board::CpuMeter m_meter;
    const board::LedService* m_leds = nullptr; ///< null unless the services run
};

int run(const Options& options, const RunWords& words) {
    StopSignals::expectAsEnd();
    return Run(options, words).run();
}

} // namespace

void addRun(CLI::App& app, Options& options) {
    const auto [command, words] = addCommand<RunWords>(
        app, options, "run", "Host the board until a signal ends it, and show what happens", run);
    command.add_option("--for", words.seconds, "End after this long")
        ->check(seconds())
        ->option_text("SECONDS");
    command.add_option("--cpu", words.cpu, "Print the CPU load at this interval")
        ->check(seconds(0.1, 86400))
        ->option_text("SECONDS");
    command.add_flag("--tour", words.tour, "Play a tour of the whole board, then end");
    command.add_flag("-y,--yes", words.yes,
                     "Let the tour set the fans of a real board without asking");
    command.add_flag(
        "--panel", words.panel,
        "Show the LEDs: live on one line of a terminal, otherwise each change as an event");
}

} // namespace boardctl
