#include "output/EventLines.h"

#include <ctime>
#include <iostream>

#include <unistd.h>

#include "base/Text.h"
#include "leds/LedPipe.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "program/StopSignals.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

/// Local time to the millisecond, with its offset from UTC.
std::string timeText(const TYTime& time) {
    const auto seconds = static_cast<std::time_t>(time.seconds);
    std::tm parts{};
    ::localtime_r(&seconds, &parts);
    char date[32], zone[8];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &parts);
    std::strftime(zone, sizeof zone, "%z", &parts);
    return String::format("%s.%03u%s", date, static_cast<unsigned>(time.nanoseconds / 1000000),
                          zone)
        .c_str();
}

double secondsOf(const TYTime& span) {
    constexpr unsigned MS = 1000, NS_A_MS = 1000000;
    const unsigned ms = span.nanoseconds / NS_A_MS; // the rest is cut off
    return (span.seconds * static_cast<double>(MS) + ms) / MS;
}

} // namespace

void EventLines::print(const char* event, const std::string& text, const ordered_json& fields) {
    if (!StopSignals::waitWritable(STDOUT_FILENO)) {
        m_isLost = true;
        return;
    }
    if (m_panel)
        m_panel->clear();
    if (m_json) {
        ordered_json line = {{"event", event}};
        line.update(fields);
        printJson(line, -1);
    } else {
        std::cout << board::printable(text) << "\n";
    }
    // Without a reader there is no point in continuing.
    m_isLost = m_isLost || !flushOutput();
}

void EventLines::fault(const std::string& text, const ordered_json& fields) {
    if (m_json)
        print("fault", text, fields);
    else if (m_panel)
        m_panel->clear();
    complain(text);
}

void EventLines::printTimed(const char* event, const std::string& text,
                            const ordered_json& fields) {
    TYTime now;
    static_cast<void>(now.getSystemClock(TYTime::SYSTEM_CLOCK));
    printTimed(now, event, text, fields);
}

void EventLines::printTimed(const TYTime& time, const char* event, const std::string& text,
                            const ordered_json& fields) {
    ordered_json all = {{"time", timeText(time)}};
    all.update(fields);
    print(event, timeText(time) + " " + text, all);
}

void EventLines::print(const board::EventQueue::Entry& entry) {
    std::visit([&](const auto& event) { printEvent(entry.time, event); }, entry.event);
}

void EventLines::printEvent(const TYTime& time, const board::event::ButtonPressed&) {
    printTimed(time, "button-pressed", "button pressed", ordered_json::object());
}

void EventLines::printEvent(const TYTime& time, const board::event::ButtonReleased& released) {
    std::string text = "button released";
    ordered_json seconds = nullptr;
    if (released.heldFor) {
        const double held = secondsOf(*released.heldFor);
        text += String::format(held < 100 ? ", held %.3g s" : ", held %.0f s", held).c_str();
        seconds = held;
    }
    printTimed(time, "button-released", text, {{"held_seconds", seconds}});
}

void EventLines::printEvent(const TYTime& time, const board::event::LedCommand& command) {
    printTimed(time, "led-command", "LED command: " + command.line, {{"line", command.line}});
}

void EventLines::printEvent(const TYTime& time, const board::event::LedChanged& led) {
    if (!m_panel) // the panel shows the state
        printTimed(time, "led", "LED '" + led.name + "' " + (led.isLit ? "on" : "off"),
                   {{"name", led.name}, {"lit", led.isLit}});
}

void EventLines::printEvent(const TYTime& time, const board::event::FaultReport& event) {
    fault(timeText(time) + " " + event.text, {{"time", timeText(time)}, {"error", event.text}});
}

void EventLines::printEvent(const TYTime&, const board::event::LogLine& line) {
    complain(line.text);
}

void EventLines::printEvent(const TYTime& time, const board::event::LedCommandUnknown& command) {
    printTimed(time, "led-command-unknown", "LED command that matches no row: " + command.line,
               {{"line", command.line}});
}

void EventLines::printEvent(const TYTime& time, const board::event::LedPipeGone& pipe) {
    printTimed(time, "led-pipe-gone", "no LED commands arrive: " + pipe.reason,
               {{"reason", pipe.reason}});
}

void EventLines::printEvent(const TYTime& time, const board::event::LedPipeBack& pipe) {
    printTimed(time, "led-pipe-back",
               "LED commands are read from " + std::string(board::LED_PIPE) + " again, which " +
                   pipe.writers + " may write",
               {{"pipe", board::LED_PIPE}, {"writers", pipe.writers}});
}

void EventLines::printEvent(const TYTime& time, const board::event::LedFileGone& led) {
    printTimed(time, "led-gone", "LED '" + led.name + "' is gone: " + led.reason,
               {{"name", led.name}, {"reason", led.reason}});
}

void EventLines::printEvent(const TYTime& time, const board::event::LedFileBack& led) {
    printTimed(time, "led-back", "LED '" + led.name + "' is back", {{"name", led.name}});
}

void EventLines::print(const board::EventQueue::Batch& batch) {
    for (const board::EventQueue::Entry& entry : batch.entries)
        print(entry);
    if (batch.lost != 0)
        fault(std::to_string(batch.lost) + " events came faster than they could be printed",
              {{"lost", batch.lost}});
}

} // namespace boardctl
