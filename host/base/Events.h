#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "TYTime.h"
#include "base/FileDescriptor.h"

namespace board {

/// What can happen on a hosted board.
namespace event {

struct ButtonPressed {};

struct ButtonReleased {
    std::optional<TYTime> heldFor; ///< empty if the press was not seen
};

/// A line that came through the LED pipe and runs a row of the table.
struct LedCommand {
    std::string line;
};

struct LedChanged {
    std::string name;
    bool isLit;
};

/// Something does not work, in words for people.
struct FaultReport {
    std::string text;
};

/// A line of the log, at a level that BOARD_LOG_LEVEL asks for.
struct LogLine {
    std::string text;
};

/// A line that came through the LED pipe and that no row of the table matches.
struct LedCommandUnknown {
    std::string line;
};

/// The LED pipe was removed or replaced, so no lines arrive.
struct LedPipeGone {
    std::string reason; ///< with the path
};

/// Lines are read from the LED pipe again.
struct LedPipeBack {
    std::string writers; ///< who may write, in words
};

/// The sequencer can't drive an LED any more.
struct LedFileGone {
    std::string name;
    std::string reason; ///< with the path
};

/// The sequencer drives the LED again.
struct LedFileBack {
    std::string name;
};

} // namespace event

using Event =
    std::variant<event::ButtonPressed, event::ButtonReleased, event::LedCommand, event::LedChanged,
                 event::FaultReport, event::LogLine, event::LedCommandUnknown, event::LedPipeGone,
                 event::LedPipeBack, event::LedFileGone, event::LedFileBack>;

/// Carries events from the services' threads to the thread that handles them.
class EventQueue {
public:
    /// Throws Error if the system has no descriptor left.
    EventQueue();

    /// Stamps the event with the time and keeps it. Any thread; never waits. If nobody takes the
    /// events, the queue keeps a few thousand and counts the rest.
    void push(Event event);

    struct Entry {
        TYTime time; ///< by the calendar clock
        Event event;
    };
    struct Batch {
        std::vector<Entry> entries; ///< in order of arrival
        unsigned lost = 0;          ///< later events that the queue had no room for
    };
    /// Everything that has arrived since the last call.
    Batch take();

    /// Readable while events are waiting.
    int descriptor() const { return m_descriptor.number(); }

private:
    const FileDescriptor m_descriptor;
    std::mutex m_mutex; // guards the batch
    Batch m_batch;
};

} // namespace board
