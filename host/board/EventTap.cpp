#include "board/EventTap.h"

#include <cstdlib>

namespace board {

namespace {

constexpr int ERROR_LEVEL = 3;

int wantedLevel() {
    const char* const set = std::getenv("BOARD_LOG_LEVEL");
    return set ? String(set).toInteger() : 0;
}

} // namespace

EventTap::EventTap(EventQueue& queue)
    : m_queue(queue), m_level(wantedLevel()), m_formerSink(RTD::SET_LOG_SINK(this)),
      m_formerMonitor(MON_EVENT.exchange(this)) {}

EventTap::~EventTap() {
    MON_EVENT = m_formerMonitor;
    RTD::SET_LOG_SINK(m_formerSink);
}

void EventTap::write(const String& category, int level, const String& text) {
    if (level <= ERROR_LEVEL)
        m_queue.push(event::FaultReport{text.c_str()});
    else if (level <= m_level)
        m_queue.push(event::LogLine{
            String::format("%s %d: %s", category.c_str(), level, text.c_str()).c_str()});
}

void EventTap::report(int, const String& text) {
    m_queue.push(event::FaultReport{text.c_str()});
}

} // namespace board
