#pragma once

#include <string>

#include "IFanControl.h"

namespace board {

/// The speeds' words: "full", "high", "low", "off".
const char* speedName(IFanControl::FanSpeed speed);
/// Throws Error for any other word.
IFanControl::FanSpeed speedOf(const std::string& word);

/// What a fan says of itself. Where the speed can't be read, `fault` says why.
struct FanReading {
    std::string name;
    std::string description;
    IFanControl::FanSpeed speed = IFanControl::FAN_SPEED_OFF;
    std::string fault;
};

class Host;

/// Reads the fan driver `name` through the repository, description and speed in force.
FanReading readFan(const Host& host, const std::string& name);

/// Sets a fan and reads it back, since a device may refuse silently: where it then reports another speed, the
/// reading's `fault` says so.
FanReading setFan(const Host& host, const std::string& name, IFanControl::FanSpeed speed);

} // namespace board
