#include "output/EventLines.h"

#include <iostream>
#include <utility>

#include <unistd.h>

#include "base/Text.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "program/StopSignals.h"
#include "watch/EventWords.h"

using nlohmann::ordered_json;

namespace boardctl {

namespace {

ordered_json withTime(const std::string& time, const ordered_json& fields) {
    ordered_json all = {{"time", time}};
    all.update(fields);
    return all;
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

void EventLines::complainAbout(const char* event, const std::string& text,
                               const ordered_json& fields) {
    if (m_json)
        print(event, text, fields);
    else if (m_panel)
        m_panel->clear();
    complain(text);
}

void EventLines::fault(const std::string& text, const ordered_json& fields) {
    complainAbout("fault", text, fields);
}

void EventLines::printTimed(const char* event, const std::string& text,
                            const ordered_json& fields) {
    const std::string time = board::timeText(board::calendarTime());
    print(event, time + " " + text, withTime(time, fields));
}

void EventLines::print(const board::EventQueue::Entry& entry) {
    const board::EventWords words = board::wordsOf(entry.event);
    if (std::holds_alternative<board::event::LogLine>(entry.event))
        return complain(words.text);
    if (m_panel && std::holds_alternative<board::event::LedChanged>(entry.event))
        return;
    std::string time = board::timeText(entry.time);
    const ordered_json fields = withTime(time, words.fields);
    const std::string text = std::move(time) + " " + words.text;
    if (words.isTrouble)
        complainAbout(words.type, text, fields);
    else
        print(words.type, text, fields);
}

bool EventLines::isReady() {
    return StopSignals::isWritable(STDOUT_FILENO) && StopSignals::isWritable(STDERR_FILENO);
}

void EventLines::offer(const board::EventQueue::Batch& batch) {
    constexpr std::size_t MOST_WAITING = 4096;
    for (const board::EventQueue::Entry& entry : batch.entries)
        if (m_waiting.entries.size() < MOST_WAITING)
            m_waiting.entries.push_back(entry);
        else
            ++m_waiting.lost;
    m_waiting.lost += batch.lost;
    printWaiting();
}

void EventLines::printWaiting() {
    std::size_t printed = 0;
    for (; printed < m_waiting.entries.size() && isReady(); ++printed)
        print(m_waiting.entries[printed]);
    const auto first = m_waiting.entries.begin();
    m_waiting.entries.erase(first, first + static_cast<std::ptrdiff_t>(printed));
    if (m_waiting.entries.empty() && m_waiting.lost != 0 && isReady())
        printRest();
}

void EventLines::printRest() {
    print(std::exchange(m_waiting, {}));
}

void EventLines::print(const board::EventQueue::Batch& batch) {
    for (const board::EventQueue::Entry& entry : batch.entries)
        print(entry);
    if (batch.lost != 0)
        fault(std::to_string(batch.lost) + " events came faster than they could be printed",
              {{"lost", batch.lost}});
}

} // namespace boardctl
