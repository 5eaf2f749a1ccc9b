#include "board/Readings.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

#include "DRIVER.h"
#include "IDriverRepository.h"
#include "ILedControl.h"
#include "IPowerStatus.h"
#include "IThermalSensor.h"
#include "base/Error.h"
#include "base/File.h"
#include "board/Host.h"
#include "profile/NamedPath.h"

namespace board {

namespace {

constexpr const char* SPEED_NAMES[] = {"full", "high", "low", "off"};

/// Why the device's file can't be opened now, as while its kernel driver is away; empty where it
/// can.
std::string reasonOf(const Host& host, const std::string& name) {
    for (const Device& device : host.devices()) {
        if (device.name != name || device.path.empty())
            continue;
        try {
            expectReadable(device.path);
        } catch (const Error& error) {
            return std::string(": ") + error.what();
        }
    }
    return "";
}

/// Asks driver `name` for `Interface`, and `use` for its value with the driver's lock held; `use`
/// returns what it complains of.
template <class Interface, class AReading, class Use>
AReading ask(const Host& host, const std::string& name, Use use) {
    AReading reading;
    reading.name = name;
    TYPPtr<Interface> driver;
    const XCode status = DRIVER::INSTANCE()->getInterface(name.c_str(), driver);
    if (!status.isSuccess()) {
        reading.fault = status.getMessage().isEmpty() ? "is another kind of driver"
                                                      : status.getMessage().c_str();
        return reading;
    }
    const auto hold = driver.getLock();
    String description;
    static_cast<void>(driver->getDescription(description)); // always succeeds
    reading.description = description.c_str();
    reading.fault = use(*driver, reading);
    // The host knows why a device can't be used; its driver only that it can't.
    const std::string known = host.faultOf(name);
    if (!reading.fault.empty() && !known.empty())
        reading.fault = known;
    else if (!reading.fault.empty())
        reading.fault += reasonOf(host, name);
    return reading;
}

std::string unless(const XCode& status, const char* complaint) {
    return status.isSuccess() ? std::string() : complaint;
}

/// Why the device gives nothing; empty where it does, or has nothing just now.
std::string faultOfDevice(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    char byte;
    const bool isReadable = file >= 0 && (::read(file, &byte, 1) >= 0 || errno == EAGAIN);
    const int error = errno;
    if (file >= 0)
        ::close(file);
    return isReadable ? std::string() : path + ": can't read: " + std::strerror(error);
}

/// Reads a value by `read`. To the drivers a device that fails is one that holds 0; so a value that
/// `isZero` stands only once the device itself could be read.
template <class Read, class IsZero>
std::string readSurely(const Host& host, const std::string& name, Read read, IsZero isZero) {
    std::string fault = read();
    if (!fault.empty() || !isZero())
        return fault;
    fault = faultOfDevice(host.pathOf(name));
    return fault.empty() ? read() : fault;
}

std::string read(const Host& host, IFanControl& fan, FanReading& reading) {
    return readSurely(
        host, reading.name,
        [&] { return unless(fan.getActualFanSpeed(reading.speed), "the speed can't be read"); },
        [&] { return reading.speed == IFanControl::FAN_SPEED_OFF; });
}

std::string read(const Host& host, ILedControl& led, LedReading& reading) {
    return readSurely(
        host, reading.name,
        [&] { return unless(led.getLedStatus(reading.state), "the state can't be read"); },
        [&] { return reading.state == 0; });
}

/// Reads until the state `isReached`, which it may never be. The kernel writes a LED that is behind
/// a bus after it has answered; until then it reads as before. It is read twice at least, however
/// slow this process is.
std::string readUntil(const Host& host, ILedControl& led, LedReading& reading,
                      const std::function<bool(unsigned)>& isReached) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(200);
    std::string fault = read(host, led, reading);
    for (bool isLast = false; !isLast && fault.empty() && !isReached(reading.state);) {
        isLast = Clock::now() >= end;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        fault = read(host, led, reading);
    }
    return fault;
}

std::string holds(const std::string& held, const std::string& written) {
    return "the device holds " + held + " after " + written + " was written";
}

} // namespace

const char* speedName(IFanControl::FanSpeed speed) {
    return SPEED_NAMES[speed];
}

IFanControl::FanSpeed speedOf(const std::string& word) {
    for (int speed = IFanControl::FAN_SPEED_FULL; speed <= IFanControl::FAN_SPEED_OFF; ++speed)
        if (word == SPEED_NAMES[speed])
            return static_cast<IFanControl::FanSpeed>(speed);
    throw Error("there is no fan speed '" + word + "' (expected full, high, low or off)");
}

FanReading readFan(const Host& host, const std::string& name) {
    return ask<IFanControl, FanReading>(host, name, [&host](IFanControl& fan, FanReading& reading) {
        return read(host, fan, reading);
    });
}

TemperatureReading readTemperature(const Host& host, const std::string& name) {
    return ask<IThermalSensor, TemperatureReading>(
        host, name, [&host](IThermalSensor& sensor, TemperatureReading& reading) {
            static_cast<void>(sensor.getMaxTemperature(reading.maximum)); // always succeeds
            return readSurely(
                host, reading.name,
                [&] {
                    return unless(sensor.getTemperature(reading.celsius),
                                  "the temperature can't be read");
                },
                [&] { return reading.celsius == 0.0F; });
        });
}

PowerReading readPower(const Host& host, const std::string& name) {
    return ask<IPowerStatus, PowerReading>(
        host, name, [&host](IPowerStatus& power, PowerReading& reading) {
            return readSurely(
                host, reading.name,
                [&] {
                    return unless(power.getPowerStatus(reading.status), "the status can't be read");
                },
                [&] { return reading.status == 0; });
        });
}

LedReading readLed(const Host& host, const std::string& name) {
    return ask<ILedControl, LedReading>(host, name, [&host](ILedControl& led, LedReading& reading) {
        return read(host, led, reading);
    });
}

FanReading setFan(const Host& host, const std::string& name, IFanControl::FanSpeed speed) {
    return ask<IFanControl, FanReading>(
        host, name, [&host, speed](IFanControl& fan, FanReading& reading) {
            const std::string refused =
                unless(fan.setFanSpeed(speed), "the speed can't be written");
            const std::string fault = read(host, fan, reading);
            if (!refused.empty() || !fault.empty())
                return refused.empty() ? fault : refused;
            return reading.speed == speed ? std::string()
                                          : holds(speedName(reading.speed), speedName(speed));
        });
}

LedReading awaitLed(const Host& host, const std::string& name,
                    const std::function<bool(unsigned)>& isReached) {
    return ask<ILedControl, LedReading>(host, name, [&](ILedControl& led, LedReading& reading) {
        return readUntil(host, led, reading, isReached);
    });
}

LedReading setLed(const Host& host, const std::string& name, unsigned state) {
    return ask<ILedControl, LedReading>(
        host, name, [&host, state](ILedControl& led, LedReading& reading) {
            const XCode written = led.setLedStatus(state);
            if (!written.isSuccess()) {
                static_cast<void>(read(host, led, reading));
                return std::string("the state can't be written");
            }
            std::string fault =
                readUntil(host, led, reading, [state](unsigned held) { return held == state; });
            if (!fault.empty())
                return fault;
            return reading.state == state
                       ? std::string()
                       : holds(std::to_string(reading.state), std::to_string(state));
        });
}

} // namespace board
