#include "watch/Alarms.h"

#include <algorithm>
#include <utility>

#include "watch/EventWords.h"

namespace board {

namespace {

std::string keyOf(Alarm::Kind kind, const std::string& device) {
    return static_cast<char>('0' + static_cast<int>(kind)) + device;
}

} // namespace

std::size_t Alarms::find(Alarm::Kind kind, const std::string& device) const {
    const auto number = m_numberOf.find(keyOf(kind, device));
    if (number == m_numberOf.end())
        return m_alarms.size();
    const auto place = std::lower_bound(m_numbers.begin(), m_numbers.end(), number->second);
    return static_cast<std::size_t>(place - m_numbers.begin());
}

bool Alarms::has(Alarm::Kind kind, const std::string& device) const {
    return find(kind, device) < m_alarms.size();
}

void Alarms::remove(std::size_t place) {
    const auto distance = static_cast<std::ptrdiff_t>(place);
    m_numberOf.erase(keyOf(m_alarms[place].kind, m_alarms[place].device));
    m_numbers.erase(m_numbers.begin() + distance);
    m_alarms.erase(m_alarms.begin() + distance);
}

void Alarms::judge(Alarm::Kind kind, const std::string& device, bool isInForce, Event begins,
                   Event ends) {
    const std::size_t place = find(kind, device);
    const bool wasInForce = place < m_alarms.size();
    if (!isInForce && !wasInForce)
        return;
    if (!isInForce)
        remove(place);
    else if (wasInForce)
        m_alarms[place].text = wordsOf(begins).text; // figures and reasons change while it lasts
    else {
        EventWords words = wordsOf(begins);
        m_alarms.push_back({kind, device, words.type, std::move(words.text), calendarTime()});
        m_numbers.push_back(++m_last);
        m_numberOf.emplace(keyOf(kind, device), m_last);
    }
    if (isInForce != wasInForce)
        m_events.push(isInForce ? std::move(begins) : std::move(ends));
}

} // namespace board
