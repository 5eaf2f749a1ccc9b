#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "RTD.h"
#include "TYTime.h"

namespace board {

/// Something that happened on a hosted board.
struct Event {
    enum class Kind {
        BUTTON_PRESSED,
        BUTTON_RELEASED, ///< `heldFor` is set where the press was seen
        LED_COMMAND,     ///< `text` is the line that came through the pipe
        LED_CHANGED,     ///< `text` is the LED's name, `isLit` its state
        FAULT,           ///< `text` is what went wrong
        LOG,             ///< `text` is a line of the log that BOARD_LOG_LEVEL asks for
    };
    Kind kind;
    std::string text;
    std::optional<TYTime> heldFor;
    bool isLit = false;
    TYTime time; ///< by the calendar clock; set by the queue
};

/// Carries events from the threads of the services to the one that prints them.
class EventQueue {
public:
    EventQueue();
    ~EventQueue();
    EventQueue(const EventQueue&) = delete;
    EventQueue& operator=(const EventQueue&) = delete;

    /// Any thread; never waits. Of events that nobody takes some thousands are kept, the rest is
    /// counted.
    void push(Event event);

    struct Batch {
        std::vector<Event> events;
        unsigned lost = 0; ///< how many later ones could not be kept
    };
    /// What has come since the last call, in order.
    Batch take();

    /// Readable while there is something to take.
    int descriptor() const { return m_descriptor; }

private:
    const int m_descriptor;
    std::mutex m_mutex;
    Batch m_batch;
};

/// While it lives, what the library logs and what it reports to the event monitor comes as events:
/// errors as faults, LED command lines as themselves, and other lines up to the number in
/// BOARD_LOG_LEVEL.
class EventTap : private RTD::LogSink, private RTD::Monitor {
public:
    explicit EventTap(EventQueue& queue);
    ~EventTap() override;

private:
    void write(const String& category, int level, const String& text) override;
    void report(int level, const String& text) override;

    EventQueue& m_queue;
    const int m_level;
    RTD::LogSink* const m_formerSink;
    RTD::Monitor* const m_formerMonitor;
};

} // namespace board
