#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "base/Events.h"
#include "output/Panel.h"

namespace boardctl {

/// Prints events on one line each, as text for people or as JSON.
class EventLines {
public:
    explicit EventLines(bool json, Panel* panel = nullptr) : m_json(json), m_panel(panel) {}

    /// Prints `text` for people, or `event` and the fields as JSON.
    void print(const char* event, const std::string& text,
               const nlohmann::ordered_json& fields = nlohmann::ordered_json::object());

    /// Like `print`, with the current time before the text and among the fields.
    void printTimed(const char* event, const std::string& text,
                    const nlohmann::ordered_json& fields);

    /// Prints a fault on standard error; with JSON also as a "fault" event with `fields`.
    void fault(const std::string& text, const nlohmann::ordered_json& fields);

    void print(const board::EventQueue::Batch& batch);

    /// True if standard output can't be written any more.
    bool isLost() const { return m_isLost; }

private:
    void print(const board::EventQueue::Entry& entry);
    void printEvent(const TYTime& time, const board::event::ButtonPressed& pressed);
    void printEvent(const TYTime& time, const board::event::ButtonReleased& released);
    void printEvent(const TYTime& time, const board::event::LedCommand& command);
    void printEvent(const TYTime& time, const board::event::LedChanged& led);
    void printEvent(const TYTime& time, const board::event::FaultReport& event);
    void printEvent(const TYTime& time, const board::event::LogLine& line);
    void printEvent(const TYTime& time, const board::event::LedCommandUnknown& command);
    void printEvent(const TYTime& time, const board::event::LedPipeGone& pipe);
    void printEvent(const TYTime& time, const board::event::LedPipeBack& pipe);
    void printEvent(const TYTime& time, const board::event::LedFileGone& led);
    void printEvent(const TYTime& time, const board::event::LedFileBack& led);
    void printTimed(const TYTime& time, const char* event, const std::string& text,
                    const nlohmann::ordered_json& fields);

    const bool m_json;
    Panel* const m_panel;
    bool m_isLost = false;
};

} // namespace boardctl
