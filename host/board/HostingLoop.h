#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

#include "base/Events.h"
#include "base/Poller.h"
#include "board/EventTap.h"

namespace board {

/// The loop of a process that hosts a board: passes events on as they arrive, serves descriptors,
/// and does what is due from time to time. One thread.
class HostingLoop {
public:
    using Clock = std::chrono::steady_clock;

    /// How the loop reads the clock and waits. A program really waits and watches its signals; a
    /// test scripts both.
    class Waiter {
    public:
        virtual ~Waiter() = default;
        virtual Clock::time_point now() = 0;
        /// Waits until `end`, forever without one, or until `descriptor` is readable if that comes
        /// first. True if the program has been asked to stop.
        virtual bool waitUntil(std::optional<Clock::time_point> end, int descriptor) = 0;
    };

    /// Receives the events, on the loop's thread.
    class Listener {
    public:
        virtual ~Listener() = default;
        virtual void onEvents(const EventQueue::Batch& batch) = 0;
        /// Called once after everything that arrived or was due during one wait.
        virtual void onRoundEnd() = 0;
        /// False ends the loop: nobody is left to receive events.
        virtual bool isListening() const = 0;
    };

    /// From now on, everything that the library logs and reports becomes an event. Both arguments
    /// must outlive the loop.
    HostingLoop(Waiter& waiter, Listener& listener);

    /// Where services put their events.
    EventQueue& events() { return m_queue; }

    /// Where others add descriptors for the loop to serve. An action of the loop may do so too.
    Poller& poller() { return m_poller; }

    /// Calls `action` every `period`, first when one has passed. If the loop is late, it skips what
    /// it has missed. Actions are called in the order in which they were added, and must not add
    /// others. The period is longer than 0.
    void every(Clock::duration period, std::function<void()> action);

    /// Runs until `end`, or forever if it is empty. True if the loop ended early, because the
    /// program has been asked to stop or nobody is listening.
    bool runUntil(std::optional<Clock::time_point> end);

    /// Passes on the events that have arrived since the last round.
    void passEventsOn();

private:
    struct Routine {
        Clock::duration period;
        Clock::time_point next;
        std::function<void()> action;
    };
    std::optional<Clock::time_point> nextOf(std::optional<Clock::time_point> end) const;
    void doWhatIsDue();

    Waiter& m_waiter;
    Listener& m_listener;
    EventQueue m_queue;
    const EventTap m_tap;
    Poller m_poller;
    std::vector<Routine> m_routines;
};

} // namespace board
