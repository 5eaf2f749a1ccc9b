#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "base/Events.h"
#include "output/Panel.h"

namespace boardctl {

/// Prints events on one line each, as text for people or as JSON. Faults also go to standard error.
class EventLines {
public:
    explicit EventLines(bool json, Panel* panel = nullptr) : m_json(json), m_panel(panel) {}

    /// Prints `text` for people, or `event` and the fields as JSON.
    void print(const char* event, const std::string& text,
               const nlohmann::ordered_json& fields = nlohmann::ordered_json::object());

    void fault(const std::string& text, const nlohmann::ordered_json& fields);

    /// The same, preceded by the current time.
    void printTimed(const char* event, const std::string& text,
                    const nlohmann::ordered_json& fields);

    void print(const board::EventQueue::Batch& batch);

    /// True if standard output can't be written any more.
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
