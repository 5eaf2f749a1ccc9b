#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

#include "base/Error.h"
#include "base/Notification.h"
#include "base/Text.h"
#include "board/Firmware.h"
#include "board/HostingLoop.h"
#include "board/Services.h"
#include "client/StatusPlaces.h"
#include "hosting/BringUp.h"
#include "hosting/Tour.h"
#include "leds/LedLine.h"
#include "output/EventLines.h"
#include "output/Prompt.h"
#include "output/Readings.h"
#include "program/Board.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/StopSignals.h"
#include "program/WordChecks.h"
#include "status/HostStatus.h"
#include "status/StatusServer.h"
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

/// Hosts a board and prints what it finds, starts and observes.
class Run : private board::HostingLoop::Waiter, private board::HostingLoop::Listener {
public:
    Run(const Options& options, const RunWords& words)
        : m_words(words), m_showsLeds(words.panel || words.tour),
          m_drawsPanel(m_showsLeds && !options.json && Panel::isPossible()),
          m_lines(options.json, m_drawsPanel ? &m_panel : nullptr), m_loop(*this, *this),
          m_board(options), m_watch(m_board.host(), m_board.profile(), m_loop.events()),
          m_status(m_board.profilePath(), m_board.profile(), m_board.host(), m_watch) {}

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
        m_lines.printRest();
        if (!m_lines.isLost())
            m_lines.print("stopped", "stopped");
        const bool isHeard = !m_lines.isLost() || StopSignals::isAsked();
        return isHeard && isGivenBack ? DONE : FAILED;
    }

private:
    void hostBoard(Clock::time_point start) {
        if (m_words.tour && !m_words.yes && !m_board.isSimulated())
            askBeforeTour();
        const BringUp bringUp(m_board, m_watch, m_lines);
        bringUp.showDevices();
        m_watch.look();
        m_loop.passEventsOn(); // the faults that it found
        bringUp.showReport();
        if (m_board.profile().firmware) {
            const auto firmware = board::readFirmware(*m_board.profile().firmware);
            m_status.setFirmware(firmware);
            bringUp.showFirmware(firmware);
        }
        {
            board::Services services(m_board.profile(), m_showsLeds, m_loop.events(), ledMemory());
            adopt(&services);
            bringUp.showServices(services);
            m_watch.sendLedLinesTo([this](const std::string& line) { return sendToLeds(line); },
                                   ledsHoldAlarm());
            answerCalls();
            m_lines.print("ready", "ready");
            notify("READY=1");
            tellSummary();
            host(services, start);
            if (m_drawsPanel)
                m_panel.clear();
            notify("STOPPING=1");
            m_watch.sendLedLinesTo(nullptr);
            adopt(nullptr);
        }
    }

    void adopt(const board::Services* services) {
        m_leds = services ? services->leds() : nullptr;
        m_status.setServices(services);
    }

    static std::string ledMemory() {
        const std::string folder = board::serviceFolder();
        return folder.empty() ? "" : folder + "/leds";
    }

    /// Whether the LEDs still show what the line `on_alarm` set before the host was restarted.
    bool ledsHoldAlarm() const {
        const auto& line = m_board.profile().watch.onAlarm;
        return m_leds && line &&
               m_leds->remembers(board::ledLine(line->word1, line->word2, line->number));
    }

    /// Listens for programs that ask for this host's status. If it can't, the host runs all the
    /// same.
    void answerCalls() {
        try {
            const auto places = board::statusPlaces(m_board.profilePath(), m_board.isSimulated());
            m_server.emplace(places.front(), m_status);
            m_loop.poller().add(m_server->descriptor(), [this] { m_server->serve(); });
            m_lines.print("status", "status: 'boardctl status' is answered on " + m_server->path(),
                          {{"socket", m_server->path()}});
        } catch (const board::Error& error) {
            m_server.reset();
            m_lines.fault(std::string("status: ") + error.what(),
                          {{"kind", "status"}, {"error", error.what()}});
        }
    }

    /// Tells the init system what to show about the service.
    void tellSummary() {
        std::string summary = m_status.summary();
        if (summary == m_summary)
            return;
        m_summary = std::move(summary);
        notify("STATUS=" + m_summary);
    }

    /// The tour slows fans down for a moment, so a real board may get too little cooling.
    void askBeforeTour() {
        const std::vector<std::string> fans = tourFans(m_board);
        if (!fans.empty())
            expectYes("Set " + board::join(fans) + " of " + m_board.profilePath() +
                          " to each speed in turn?",
                      m_board.profilePath() + ": the tour was not played",
                      m_board.profilePath() + ": the tour sets fans of a real board, and standard "
                                              "input is not a terminal to ask on (expected -y)");
    }

    /// Applies `on_exit` of the profile to each fan that was set. False on failure.
    bool giveBack() {
        const std::vector<std::string> faults = m_board.host().giveBack();
        for (const std::string& fault : faults)
            m_lines.fault(fault, {{"kind", "fan"}, {"error", fault}});
        return faults.empty();
    }

    /// Sends a line that the profile has for the beginning or end of alarms. Returns false if that
    /// fails; the same failure is reported only once.
    bool sendToLeds(const std::string& line) {
        try {
            // If another program reads the pipe instead of this host, it must not get the line.
            if (!m_status.takesLedLines())
                throw board::Error("no LED service of this host takes commands");
            board::sendLedLine(line);
            m_lineFault.clear();
            return true;
        } catch (const board::Error& error) {
            const std::string fault = "leds: '" + line + "' can't be sent: " + error.what();
            if (std::exchange(m_lineFault, fault) != fault)
                m_loop.events().push(board::event::FaultReport{fault});
            return false;
        }
    }

    void notify(const std::string& state) {
        if (const std::optional<std::string> fault = m_initSystem.tell(state))
            m_lines.fault(*fault, {{"error", *fault}});
    }

    void host(board::Services& services, Clock::time_point start) {
        m_loop.every(m_board.profile().watch.period, [&] {
            m_watch.look();
            services.lookAtButton();
            if (services.lookAtLeds())
                adopt(&services);
        });
        if (const auto period = board::watchdogPeriod())
            m_loop.every(*period / 2, [this] { notify("WATCHDOG=1"); });
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
        if (EventLines::isReady())
            m_lines.printTimed("cpu", "CPU load " + (load ? toText(load) : load.fault()),
                               toJson(load));
    }

    Clock::time_point now() override { return Clock::now(); }
    bool waitUntil(std::optional<Clock::time_point> end, int descriptor) override {
        return StopSignals::waitUntil(end, descriptor);
    }

    void onEvents(const board::EventQueue::Batch& batch) override {
        m_lines.offer(batch); // without waiting: a blocked reader must not block the host
        m_status.noteLost(batch.lost);
        for (const board::EventQueue::Entry& entry : batch.entries) {
            const ordered_json event = m_status.note(entry);
            if (m_server)
                m_server->publish(event);
        }
    }
    /// Sends the LEDs that are lit to the clients that monitor them.
    void passLedsOn() {
        if (!m_server || !m_leds)
            return;
        m_leds->wakeAtChanges(m_server->isAskedForLeds());
        m_server->publishLeds(m_leds->lit());
    }

    void onRoundEnd() override {
        passLedsOn();
        tellSummary();
        m_lines.printWaiting();
        if (m_drawsPanel && m_leds && EventLines::isReady())
            m_panel.draw(m_leds->states());
    }
    bool isListening() const override { return !m_lines.isLost(); }

    const RunWords m_words;
    const bool m_showsLeds; ///< for --panel and --tour
    const bool m_drawsPanel;
    board::InitSystem m_initSystem;
    Panel m_panel;
    EventLines m_lines;
    board::HostingLoop m_loop;
    Board m_board;
    board::Watch m_watch;
    board::HostStatus m_status;
    std::optional<board::StatusServer> m_server;
    std::string m_lineFault; ///< why the last line of the watch could not be sent
    std::string m_summary;   ///< what the init system was told last
    board::CpuMeter m_meter;
    const board::LedService* m_leds = nullptr; ///< null if there is no LED service
};

int run(const Options& options, const RunWords& words) {
    StopSignals::expectAsEnd();
    return Run(options, words).run();
}

} // namespace

void addRun(CLI::App& app, Options& options) {
    const auto [command, words] = addHostingCommand<RunWords, run>(
        app, options, "run", "Host the board until a signal ends it, and show what happens");
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
