#include "EventLines.h"
#include "base/Text.h"

#include <ctime>
#include <iostream>

#include <unistd.h>

#include "Output.h"
#include "StopSignals.h"

using nlohmann::ordered_json;

namespace {

/// Local time to the millisecond with its distance from UTC.
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
    const unsigned ms = span.nanoseconds / NS_A_MS; // the finer part is cut off
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
    // Somebody watches; a watcher that went away is the end.
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

void EventLines::print(const board::Event& event) {
    using Kind = board::Event::Kind;
    switch (event.kind) {
    case Kind::BUTTON_PRESSED:
        return printTimed(event.time, "button-pressed", "button pressed", ordered_json::object());
    case Kind::BUTTON_RELEASED: {
        if (!event.heldFor)
            return printTimed(event.time, "button-released", "button released",
                              {{"held_seconds", nullptr}});
        const double held = secondsOf(*event.heldFor);
        return printTimed(event.time, "button-released",
                          String::format(held < 100 ? "button released, held %.3g s"
                                                    : "button released, held %.0f s",
                                         held)
                              .c_str(),
                          {{"held_seconds", held}});
    }
    case Kind::LED_COMMAND:
        return printTimed(event.time, "led-command", "LED command: " + event.text,
                          {{"line", event.text}});
    case Kind::LED_CHANGED:
        if (m_panel)
            return; // it shows the state itself
        return printTimed(event.time, "led",
                          "LED '" + event.text + "' " + (event.isLit ? "on" : "off"),
                          {{"name", event.text}, {"lit", event.isLit}});
    case Kind::FAULT:
        return fault(timeText(event.time) + " " + event.text,
                     {{"time", timeText(event.time)}, {"error", event.text}});
    case Kind::LOG:
        return complain(event.text);
    }
}

void EventLines::print(const board::EventQueue::Batch& batch) {
    for (const board::Event& event : batch.events)
        print(event);
    if (batch.lost != 0)
        fault(std::to_string(batch.lost) + " events came faster than they could be printed",
              {{"lost", batch.lost}});
}
