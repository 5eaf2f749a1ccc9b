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

    /// Prints the events of the board with their times. Trouble goes to standard error and, with
    /// JSON, to standard output too. With a panel, changes of LEDs are not printed: the panel shows
    /// them.
    void print(const board::EventQueue::Batch& batch);

    /// Prints the events without waiting for the reader. Keeps those that can't be printed now for
    /// `printWaiting`: up to a few thousand events; the rest are only counted.
    void offer(const board::EventQueue::Batch& batch);
    /// Prints the kept events, as many as possible without waiting.
    void printWaiting();
    /// Prints all kept events, however long the reader takes.
    void printRest();

    /// Whether standard output and standard error can be written without waiting.
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
