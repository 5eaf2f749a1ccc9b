#pragma once

#include <functional>
#include <optional>
#include <string>

#include "IFanControl.h"
#include "XCode.h"
#include "base/Result.h"

namespace board {

class Host;
struct Device;

/// What a device reports through its driver in the repository. The value is a fault if the device's
/// file holds no number, or one that a device of its kind can't have. After an operation that sets
/// the device, it is a fault too if the device holds something else.
template <class Value>
struct Reading {
    std::string name;        ///< the driver's name
    std::string description; ///< from the profile, also if the device can't be read
    Result<Value> value = Fault{"has not been read"};

    /// Why something is missing in the reading; empty if nothing is.
    std::optional<std::string> fault() const {
        return value ? std::nullopt : std::optional(value.fault());
    }
};

struct FanReading : Reading<IFanControl::FanSpeed> {
    std::optional<Result<unsigned>> rpm; ///< empty if the fan has no tachometer or was just set

    std::optional<std::string> fault() const;
};

/// In degrees Celsius.
struct TemperatureReading : Reading<float> {
    unsigned maximum = 0; ///< from the profile, also if the temperature can't be read
};

/// The status word.
struct PowerReading : Reading<unsigned> {};

/// The state: 0 off, 1 lit, 2 lit in the second way. Any other brightness is its own state.
struct LedReading : Reading<unsigned> {
    unsigned brightness = 0; ///< what the device holds; meaningless without a value
};

/// The word for a fan speed: "full", "high", "low", "off".
const char* speedName(IFanControl::FanSpeed speed);
/// Throws Error for any other word.
IFanControl::FanSpeed speedOf(const std::string& word);

FanReading readFan(const Host& host, const std::string& name);
TemperatureReading readTemperature(const Host& host, const std::string& name);
PowerReading readPower(const Host& host, const std::string& name);
LedReading readLed(const Host& host, const std::string& name);

/// Reads an LED until its brightness `isReached`, or for as long as the kernel may need to write to
/// an LED on a bus. A brightness that is not reached is not a fault.
LedReading awaitLed(const Host& host, const std::string& name,
                    const std::function<bool(unsigned)>& isReached);

/// Set a device and read it back, because a device may refuse a value silently.
FanReading setFan(const Host& host, const std::string& name, IFanControl::FanSpeed speed);
LedReading setLed(const Host& host, const std::string& name, unsigned state);
/// The same with what the device is to hold, whatever state that is.
LedReading setLedBrightness(const Host& host, const std::string& name, unsigned brightness);

/// Puts a fan under automatic control, and reads its speed. The value is a fault if the board does
/// not accept that.
FanReading setFanAutomatic(const Host& host, const std::string& name);

/// An operation of a driver that writes to its device, with the system's reason if that failed. A
/// driver ignores the result of its write.
struct Attempt {
    /// Calls `write`, which returns an XCode.
    explicit Attempt(const std::function<XCode()>& write);

    /// "can't write" with the system's reason, if there is one, and what the device holds instead.
    Fault refusal(const Device& device, const std::string& held, const std::string& written) const;

    bool isDone;
    int error; ///< the system's; 0 if it reported none
};

} // namespace board
