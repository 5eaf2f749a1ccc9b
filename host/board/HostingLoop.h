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
/// and calls periodic actions. One thread.
class HostingLoop {
public:
    using Clock = std::chrono::steady_clock;

    /// How the loop reads the clock and waits. In a program, this really waits and notices signals;
    /// in a test, the clock and the waits are scripted.
    class Waiter {
    public:
        virtual ~Waiter() = default;
        virtual Clock::time_point now() = 0;
        /// Waits until `end` (forever if it is empty) or until `descriptor` is readable, whichever
        /// comes first. Returns true if the program has been asked to stop.
        virtual bool waitUntil(std::optional<Clock::time_point> end, int descriptor) = 0;
    };

    /// Receives the events, on the loop's thread.
    class Listener {
    public:
        virtual ~Listener() = default;
        virtual void onEvents(const EventQueue::Batch& batch) = 0;
        /// Called once after each wait, when everything that had arrived or was due is done.
        virtual void onRoundEnd() = 0;
        /// False if nobody is left to receive events, which ends the loop.
        virtual bool isListening() const = 0;
    };

    /// From now on, everything that the library logs and reports becomes an event. Both arguments
    /// must outlive the loop.
    HostingLoop(Waiter& waiter, Listener& listener);

    /// Where services put their events.
    EventQueue& events() { return m_queue; }

    /// Where others add descriptors for the loop to serve. An action of the loop may add some too.
    Poller& poller() { return m_poller; }

    /// Calls `action` every `period`, for the first time after one period. If the loop is late, it
    /// skips the calls that it has missed. Actions are called in the order in which they were
    /// added, and must not add others. `period` must be longer than 0.
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
