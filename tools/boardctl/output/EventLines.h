#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "base/Events.h"
#include "output/Panel.h"

namespace boardctl {

/// Prints what happens, a line each: text for people, or a JSON document a line. Faults go to
/// standard error too, which is where people see them.
class EventLines {
public:
    explicit EventLines(bool json, Panel* panel = nullptr) : m_json(json), m_panel(panel) {}

    /// `text` for people; for programs `event` and the fields.
    void print(const char* event, const std::string& text,
               const nlohmann::ordered_json& fields = nlohmann::ordered_json::object());

    void fault(const std::string& text, const nlohmann::ordered_json& fields);

    /// The same with the time, now or `time`, in front.
    void printTimed(const char* event, const std::string& text,
                    const nlohmann::ordered_json& fields);

    /// What the services tell.
    void print(const board::EventQueue::Batch& batch);

    /// Whether somebody who watched has gone, and with that the reason to go on.
    bool isLost() const { return m_isLost; }

private:
    void print(const board::EventQueue::Entry& entry);
    void printEvent(const TYTime& time, const board::event::ButtonPressed& pressed);
    void printEvent(const TYTime& time, const board::event::ButtonReleased& released);
    void printEvent(const TYTime& time, const board::event::LedCommand& command);
    void printEvent(const TYTime& time, const board::event::LedChanged& led);
    void printEvent(const TYTime& time, const board::event::Fault& event);
    void printEvent(const TYTime& time, const board::event::LogLine& line);
    void printTimed(const TYTime& time, const char* event, const std::string& text,
                    const nlohmann::ordered_json& fields);

    const bool m_json;
    Panel* const m_panel;
    bool m_isLost = false;
};

} // namespace boardctl
