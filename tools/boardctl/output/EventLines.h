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

    /// Like the first `print`, with the current time before the text and among the fields.
    void printTimed(const char* event, const std::string& text,
                    const nlohmann::ordered_json& fields);

    /// Prints a fault on standard error; with JSON also as a "fault" event with `fields`.
    void fault(const std::string& text, const nlohmann::ordered_json& fields);

    /// Prints what has happened on the board, with its time. What does not work goes to standard
    /// error, with JSON to both. A panel shows the LEDs, so their changes are not printed then.
    void print(const board::EventQueue::Batch& batch);

    /// The same without waiting for the reader: what can't be printed now is kept for
    /// `printWaiting`. A few thousand events are kept; the rest is counted.
    void offer(const board::EventQueue::Batch& batch);
    /// Prints what is kept, as far as that is possible without waiting.
    void printWaiting();
    /// Prints what is kept, however long the reader takes.
    void printRest();

    /// Whether something can be printed without waiting, also a fault.
    static bool isReady();

    /// True if standard output can't be written any more.
    bool isLost() const { return m_isLost; }

private:
    void print(const board::EventQueue::Entry& entry);
    void complainAbout(const char* event, const std::string& text,
                       const nlohmann::ordered_json& fields);

    const bool m_json;
    Panel* const m_panel;
    bool m_isLost = false;
    board::EventQueue::Batch m_waiting;
};

} // namespace boardctl
