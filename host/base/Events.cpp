#include "base/Events.h"

#include <cerrno>
#include <utility>

#include <sys/eventfd.h>

#include "base/Error.h"
#include "base/File.h"

namespace board {

namespace {

constexpr std::size_t MOST_EVENTS_WAITING = 4096;

FileDescriptor makeEventDescriptor() {
    FileDescriptor descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!descriptor.isOpen())
        throw Error("can't create an event descriptor: " + reasonOf(errno));
    return descriptor;
}

} // namespace

TYTime calendarTime() {
    TYTime now;
    static_cast<void>(now.getSystemClock(TYTime::SYSTEM_CLOCK));
    return now;
}

EventQueue::EventQueue() : m_descriptor(makeEventDescriptor()) {}

void EventQueue::push(Event event) {
    const TYTime now = calendarTime();
    const std::lock_guard<std::mutex> hold(m_mutex);
    if (m_batch.entries.size() < MOST_EVENTS_WAITING)
        m_batch.entries.push_back({now, std::move(event)});
    else
        ++m_batch.lost;
    wake();
}

void EventQueue::wake() const {
    ::eventfd_write(m_descriptor.number(), 1);
}

EventQueue::Batch EventQueue::take() {
    const std::lock_guard<std::mutex> hold(m_mutex);
    eventfd_t ignored;
    ::eventfd_read(m_descriptor.number(), &ignored);
    return std::exchange(m_batch, Batch());
}

} // namespace board
