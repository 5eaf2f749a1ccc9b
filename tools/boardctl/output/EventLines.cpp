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

void EventLines::print(const board::EventQueue::Batch& batch) {
    for (const board::EventQueue::Entry& entry : batch.entries)
        print(entry);
    if (batch.lost != 0)
        fault(std::to_string(batch.lost) + " events came faster than they could be printed",
              {{"lost", batch.lost}});
}

} // namespace boardctl
