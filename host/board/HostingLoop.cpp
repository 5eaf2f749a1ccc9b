#include "board/HostingLoop.h"

#include <algorithm>
#include <utility>

namespace board {

HostingLoop::HostingLoop(Waiter& waiter, Listener& listener)
    : m_waiter(waiter), m_listener(listener), m_tap(m_queue) {
    m_poller.add(m_queue.descriptor(), [this] { passEventsOn(); });
}

void HostingLoop::every(Clock::duration period, std::function<void()> action) {
    m_routines.push_back({period, m_waiter.now() + period, std::move(action)});
}

bool HostingLoop::runUntil(std::optional<Clock::time_point> end) {
    while (m_listener.isListening()) {
        const bool isAskedToStop = m_waiter.waitUntil(nextOf(end), m_poller.descriptor());
        m_poller.serve();
        doWhatIsDue();
        m_listener.onRoundEnd();
        if (isAskedToStop)
            return true;
        if (end && m_waiter.now() >= *end)
            return !m_listener.isListening();
    }
    return true;
}

std::optional<HostingLoop::Clock::time_point>
HostingLoop::nextOf(std::optional<Clock::time_point> end) const {
    std::optional<Clock::time_point> next = end;
    for (const Routine& routine : m_routines)
        next = next ? std::min(*next, routine.next) : routine.next;
    return next;
}

void HostingLoop::doWhatIsDue() {
    bool isDone = false;
    for (Routine& routine : m_routines) {
        const auto late = m_waiter.now() - routine.next;
        if (late < Clock::duration::zero())
            continue;
        routine.next += (late / routine.period + 1) * routine.period;
        routine.action();
        isDone = true;
    }
    if (isDone) // now, because the actions' events would end the next wait at once
        passEventsOn();
}

void HostingLoop::passEventsOn() {
    const EventQueue::Batch batch = m_queue.take();
    if (!batch.entries.empty() || batch.lost != 0)
        m_listener.onEvents(batch);
}

} // namespace board
