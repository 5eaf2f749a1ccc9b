#include "board/HostingLoop.h"

#include <algorithm>

namespace board {

namespace {

constexpr auto CPU_PERIOD = std::chrono::seconds(5);

} // namespace

HostingLoop::HostingLoop(Waiter& waiter, Listener& listener)
    : m_waiter(waiter), m_listener(listener), m_tap(m_queue) {}

bool HostingLoop::runUntil(std::optional<Clock::time_point> end) {
    if (!m_nextCpu)
        m_nextCpu = m_waiter.now() + CPU_PERIOD;
    while (m_listener.isListening()) {
        const auto next = end ? std::min(*end, *m_nextCpu) : *m_nextCpu;
        const bool isAskedToStop = m_waiter.waitUntil(next, m_queue.descriptor());
        passEventsOn();
        if (m_waiter.now() >= *m_nextCpu) {
            while (*m_nextCpu <= m_waiter.now()) // missed measurements are skipped
                *m_nextCpu += CPU_PERIOD;
            m_listener.onCpuLoad(m_meter.next());
        }
        m_listener.onRoundEnd();
        if (isAskedToStop)
            return true;
        if (end && m_waiter.now() >= *end)
            return !m_listener.isListening();
    }
    return true;
}

void HostingLoop::passEventsOn() {
    const EventQueue::Batch batch = m_queue.take();
    if (!batch.entries.empty() || batch.lost != 0)
        m_listener.onEvents(batch);
}

} // namespace board
