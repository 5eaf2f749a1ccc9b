#pragma once

#include <string>
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

    /// Whether the alarm is in force now. If that is a change, `begins` or `ends` becomes an event.
    /// An alarm in force has the text of `begins`.
    void judge(Alarm::Kind kind, const std::string& device, bool isInForce, Event begins,
               Event ends);

    bool has(Alarm::Kind kind, const std::string& device) const;

    /// In the order in which they began.
    const std::vector<Alarm>& all() const { return m_alarms; }

private:
    EventQueue& m_events;
    std::vector<Alarm> m_alarms;
};

} // namespace board
