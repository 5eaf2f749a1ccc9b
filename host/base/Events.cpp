#include "base/Events.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

#include "base/Error.h"

namespace board {

namespace {

constexpr std::size_t MOST_WAITING = 4096;
constexpr int ERROR_LEVEL = 3;
constexpr char COMMAND[] = "LED Command: ";

int makeDescriptor() {
    const int descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor < 0)
        throw Error(std::string("no event descriptor: ") + std::strerror(errno));
    return descriptor;
}

int wantedLevel() {
    const char* const set = std::getenv("BOARD_LOG_LEVEL");
    return set ? String(set).toInteger() : 0;
}

} // namespace

EventQueue::EventQueue() : m_descriptor(makeDescriptor()) {}

EventQueue::~EventQueue() {
    ::close(m_descriptor);
}

void EventQueue::push(Event event) {
    static_cast<void>(event.time.getSystemClock(TYTime::SYSTEM_CLOCK));
    const std::lock_guard<std::mutex> hold(m_mutex);
    if (m_batch.events.size() < MOST_WAITING)
        m_batch.events.push_back(std::move(event));
    else
        ++m_batch.lost;
    ::eventfd_write(m_descriptor, 1);
}

EventQueue::Batch EventQueue::take() {
    const std::lock_guard<std::mutex> hold(m_mutex);
    eventfd_t ignored;
    ::eventfd_read(m_descriptor, &ignored);
    return std::exchange(m_batch, Batch());
}

EventTap::EventTap(EventQueue& queue)
    : m_queue(queue), m_level(wantedLevel()), m_formerSink(RTD::SET_LOG_SINK(this)),
      m_formerMonitor(MON_EVENT.exchange(this)) {}

EventTap::~EventTap() {
    MON_EVENT = m_formerMonitor;
    RTD::SET_LOG_SINK(m_formerSink);
}

void EventTap::write(const String& category, int level, const String& text) {
    if (level <= ERROR_LEVEL)
        m_queue.push({Event::Kind::FAULT, text.c_str(), {}, false, {}});
    else if (text.startsWith(COMMAND))
        m_queue.push({Event::Kind::LED_COMMAND, text.c_str() + sizeof COMMAND - 1, {}, false, {}});
    else if (level <= m_level)
        m_queue.push({Event::Kind::LOG,
                      String::format("%s %d: %s", category.c_str(), level, text.c_str()).c_str(),
                      {},
                      false,
                      {}});
}

void EventTap::report(int, const String& text) {
    m_queue.push({Event::Kind::FAULT, text.c_str(), {}, false, {}});
}

} // namespace board
