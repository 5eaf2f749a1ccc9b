#pragma once

#include <functional>
#include <string>

#include "IFanControl.h"
#include "base/Result.h"

namespace board {

class Host;

/// What a device reports through its driver in the repository. After an operation that sets the
/// device, the value is a fault if the device holds something else.
template <class Value>
struct Reading {
    std::string name;        ///< the driver's name
    std::string description; ///< from the kernel driver; empty if there is no such driver
    Result<Value> value = Fault{"has not been read"};
};

struct FanReading : Reading<IFanControl::FanSpeed> {};

/// In degrees Celsius.
struct TemperatureReading : Reading<float> {
    unsigned maximum = 0; ///< from the kernel driver, also if the temperature can't be read
};

/// The status word.
struct PowerReading : Reading<unsigned> {};

/// The state: 0 off, 1 lit, 2 lit in the second way.
struct LedReading : Reading<unsigned> {};

/// The word for a fan speed: "full", "high", "low", "off".
const char* speedName(IFanControl::FanSpeed speed);
/// Throws Error for any other word.
IFanControl::FanSpeed speedOf(const std::string& word);

FanReading readFan(const Host& host, const std::string& name);
TemperatureReading readTemperature(const Host& host, const std::string& name);
PowerReading readPower(const Host& host, const std::string& name);
LedReading readLed(const Host& host, const std::string& name);

/// Reads an LED until its state `isReached`, or for as long as the kernel may need to write to an
/// LED on a bus. A state that is not reached is not a fault.
LedReading awaitLed(const Host& host, const std::string& name,
                    const std::function<bool(unsigned)>& isReached);

/// Set a device and read it back, because a device may refuse a value silently.
FanReading setFan(const Host& host, const std::string& name, IFanControl::FanSpeed speed);
LedReading setLed(const Host& host, const std::string& name, unsigned state);

} // namespace board
