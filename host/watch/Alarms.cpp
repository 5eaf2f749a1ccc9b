#include "watch/Alarms.h"

#include <algorithm>
#include <utility>

#include "watch/EventWords.h"

namespace board {

namespace {

template <class List>
auto find(List& alarms, Alarm::Kind kind, const std::string& device) -> decltype(alarms.begin()) {
    return std::find_if(alarms.begin(), alarms.end(), [&](const Alarm& alarm) {
        return alarm.kind == kind && alarm.device == device;
    });
}

} // namespace

bool Alarms::has(Alarm::Kind kind, const std::string& device) const {
    return find(m_alarms, kind, device) != m_alarms.end();
}

void Alarms::judge(Alarm::Kind kind, const std::string& device, bool isInForce, Event begins,
                   Event ends) {
    const auto found = find(m_alarms, kind, device);
    const bool wasInForce = found != m_alarms.end();
    if (!isInForce && !wasInForce)
        return;
    if (!isInForce)
        m_alarms.erase(found);
    else if (wasInForce)
        found->text = wordsOf(begins).text; // figures and reasons change while an alarm lasts
    else {
        EventWords words = wordsOf(begins);
        m_alarms.push_back({kind, device, words.type, std::move(words.text), calendarTime()});
    }
    if (isInForce != wasInForce)
        m_events.push(isInForce ? std::move(begins) : std::move(ends));
}

} // namespace board
