#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/Events.h"

namespace board {

/// A fault of a device, for as long as it lasts.
struct Alarm {
    enum class Kind { DEVICE_GONE, TEMPERATURE_OVER, POWER_LOST, FAN_ASTRAY, FAN_STOPPED };
    Kind kind;
    std::string device; ///< the name of its driver
    const char* type;   ///< of the event that began it, such as "device-gone"
    std::string text;   ///< for people, names the device
    TYTime since;       ///< by the calendar clock
};

/// The alarms in force: at most one of each kind for a device. One thread.
class Alarms {
public:
    /// `events` must outlive the object.
    explicit Alarms(EventQueue& events) : m_events(events) {}

    /// Sets whether the alarm is in force now. If that is a change, `begins` or `ends` becomes an
    /// event. An alarm in force has the text of `begins`.
    void judge(Alarm::Kind kind, const std::string& device, bool isInForce, Event begins,
               Event ends);

    bool has(Alarm::Kind kind, const std::string& device) const;

    /// In the order in which they began.
    const std::vector<Alarm>& all() const { return m_alarms; }

private:
    /// The place of an alarm in the list; the list's size if the alarm is not in force.
    std::size_t find(Alarm::Kind kind, const std::string& device) const;
    void remove(std::size_t place);

    EventQueue& m_events;
    std::vector<Alarm> m_alarms;
    std::vector<std::uint64_t> m_numbers; ///< of these alarms, ascending
    std::unordered_map<std::string, std::uint64_t> m_numberOf;
    std::uint64_t m_last = 0; ///< number of the last alarm that began
};

} // namespace board
