#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "base/Events.h"

namespace board {

/// An event in words.
struct EventWords {
    const char* type;              ///< in JSON, such as "device-gone"
    std::string text;              ///< for people, on one line, without the time
    nlohmann::ordered_json fields; ///< an object, without the type and the time
    bool isTrouble = false;        ///< something does not work, or an alarm begins
};

/// The event in words. A line of the log has the type "log".
EventWords wordsOf(const Event& event);

/// Local time to the millisecond, with its offset from UTC: "2030-01-31T12:00:00.000+0100".
std::string timeText(const TYTime& time);

} // namespace board
