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

/// What a device reports through its driver in the repository. The value is a fault if the device
/// can't be used, or if its file holds no number or one that such a device can't have. After an
/// operation that sets the device, the value is also a fault if the device does not hold what was
/// set.
template <class Value>
struct Reading {
    std::string name;        ///< the driver's name
    std::string description; ///< from the profile, even if the device can't be read
    Result<Value> value = Fault{"has not been read"};

    /// Why part of the reading is missing; empty if nothing is missing.
    std::optional<std::string> fault() const {
        return value ? std::nullopt : std::optional(value.fault());
    }
};

struct FanReading : Reading<IFanControl::FanSpeed> {
    /// Empty if the fan has no tachometer, or if the reading is the result of setting the fan.
    std::optional<Result<unsigned>> rpm;

    std::optional<std::string> fault() const;
};

/// In degrees Celsius.
struct TemperatureReading : Reading<float> {
    unsigned maximum = 0; ///< from the profile, even if the temperature can't be read
};

/// The status word.
struct PowerReading : Reading<unsigned> {};

/// The state: 0 off, 1 lit, 2 lit in the second way; any other number is the brightness.
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

/// Reads an LED until `isReached` accepts its brightness, but no longer than the kernel may need to
/// write to an LED on a bus. It is not a fault if `isReached` never accepts the brightness.
LedReading awaitLed(const Host& host, const std::string& name,
                    const std::function<bool(unsigned)>& isReached);

/// Set a device and read it back, because a device may refuse a value silently.
FanReading setFan(const Host& host, const std::string& name, IFanControl::FanSpeed speed);
LedReading setLed(const Host& host, const std::string& name, unsigned state);
/// Like setLed, but writes `brightness` itself: setLed replaces state 1 with the profile's
/// brightness for a lit LED.
LedReading setLedBrightness(const Host& host, const std::string& name, unsigned brightness);

/// Puts a fan under automatic control, and reads its speed. The value is a fault if the board does
/// not accept automatic control.
FanReading setFanAutomatic(const Host& host, const std::string& name);

/// A driver's operation that writes to its device, with the system's reason if the write failed.
/// The driver itself ignores the result of the write.
struct Attempt {
    /// Calls `write`, which returns an XCode.
    explicit Attempt(const std::function<XCode()>& write);

    /// The fault of a device that holds `held` although `written` was written to it, with the
    /// system's reason if there is one.
    Fault refusal(const Device& device, const std::string& held, const std::string& written) const;

    bool isDone;
    int error; ///< the `errno` of the write; 0 if it set none
};

} // namespace board
