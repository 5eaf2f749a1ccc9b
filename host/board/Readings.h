#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "IFanControl.h"

namespace board {

class Host;

/// What a device says of itself, asked of its driver through the repository.
struct Reading {
    std::string name;        ///< the driver's
    std::string description; ///< the kernel driver's
    std::string fault; ///< why the value is not known or not what was asked for; empty where it is
};

struct FanReading : Reading {
    IFanControl::FanSpeed speed = IFanControl::FAN_SPEED_OFF;
};

struct TemperatureReading : Reading {
    float celsius = 0;
    unsigned maximum = 0; ///< as the kernel driver states it
};

struct PowerReading : Reading {
    unsigned status = 0;
};

struct LedReading : Reading {
    unsigned state = 0;
};

/// The fan speeds' words: "full", "high", "low", "off".
const char* speedName(IFanControl::FanSpeed speed);
/// Throws Error for any other word.
IFanControl::FanSpeed speedOf(const std::string& word);

FanReading readFan(const Host& host, const std::string& name);
TemperatureReading readTemperature(const Host& host, const std::string& name);
PowerReading readPower(const Host& host, const std::string& name);
LedReading readLed(const Host& host, const std::string& name);
/// The same once the state `isReached`, or after a time that is long for a LED behind a bus, which
/// the kernel writes late. No fault where it was not reached.
LedReading awaitLed(const Host& host, const std::string& name,
                    const std::function<bool(unsigned)>& isReached);

/// Set a device and read it back, since a device may refuse silently: where it then holds something
/// else, `fault` says so.
FanReading setFan(const Host& host, const std::string& name, IFanControl::FanSpeed speed);
LedReading setLed(const Host& host, const std::string& name, unsigned state);

} // namespace board
