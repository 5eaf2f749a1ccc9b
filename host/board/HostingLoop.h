#pragma once

#include <chrono>
#include <optional>

#include "base/Events.h"
#include "base/Result.h"
#include "board/CpuMeter.h"
#include "board/EventTap.h"

namespace board {

/// The loop of a process that hosts a board: passes events on as they arrive and measures the load
/// of the processors every five seconds. One thread.
class HostingLoop {
public:
    using Clock = std::chrono::steady_clock;

    /// How the loop reads the clock and waits. A program really waits and watches its signals; a
    /// test scripts both.
    class Waiter {
    public:
        virtual ~Waiter() = default;
        virtual Clock::time_point now() = 0;
        /// Waits until `end`, or until `descriptor` is readable if that comes first. True if the
        /// program has been asked to stop.
        virtual bool waitUntil(Clock::time_point end, int descriptor) = 0;
    };

    /// Receives the events and measurements, on the loop's thread.
    class Listener {
    public:
        virtual ~Listener() = default;
        virtual void onEvents(const EventQueue::Batch& batch) = 0;
        virtual void onCpuLoad(const Result<CpuReading>& load) = 0;
        /// Called once after everything that arrived during one wait.
        virtual void onRoundEnd() = 0;
        /// False ends the loop: nobody is left to receive events.
        virtual bool isListening() const = 0;
    };

    /// From now on, everything that the library logs and reports becomes an event. Takes the first
    /// sample of the load. Both arguments must outlive the loop.
    HostingLoop(Waiter& waiter, Listener& listener);

    /// Where services put their events.
    EventQueue& events() { return m_queue; }

    /// Runs until `end`, or forever if it is empty. True if the loop ended early, because the
    /// program has been asked to stop or nobody is listening.
    bool runUntil(std::optional<Clock::time_point> end);

    /// Passes on the events that have arrived since the last round.
    void passEventsOn();

private:
    Waiter& m_waiter;
    Listener& m_listener;
    EventQueue m_queue;
    const EventTap m_tap;
    CpuMeter m_meter;
    std::optional<Clock::time_point> m_nextCpu; ///< empty before the first run
};

} // namespace board
