#include "board/Readings.h"

#include <cerrno>
#include <chrono>
#include <thread>

#include <fcntl.h>

#include "DRIVER.h"
#include "IDriverRepository.h"
#include "ILedControl.h"
#include "IPowerStatus.h"
#include "IThermalSensor.h"
#include "base/Error.h"
#include "base/File.h"
#include "board/Host.h"

namespace board {

namespace {

constexpr const char* SPEED_NAMES[] = {"full", "high", "low", "off"};

Result<IFanControl::FanSpeed> readOnce(IFanControl& fan) {
    auto speed = IFanControl::FAN_SPEED_OFF;
    if (!fan.getActualFanSpeed(speed).isSuccess())
        return Fault{"the speed can't be read"};
    return speed;
}

Result<float> readOnce(IThermalSensor& sensor) {
    float celsius = 0;
    if (!sensor.getTemperature(celsius).isSuccess())
        return Fault{"the temperature can't be read"};
    return celsius;
}

Result<unsigned> readOnce(IPowerStatus& power) {
    unsigned status = 0;
    if (!power.getPowerStatus(status).isSuccess())
        return Fault{"the status can't be read"};
    return status;
}

Result<unsigned> readOnce(ILedControl& led) {
    unsigned state = 0;
    if (!led.getLedStatus(state).isSuccess())
        return Fault{"the state can't be read"};
    return state;
}

// What a driver reports for a device that holds 0, and also for one that can't be read.
bool isZero(IFanControl::FanSpeed speed) {
    return speed == IFanControl::FAN_SPEED_OFF;
}
bool isZero(float celsius) {
    return celsius == 0.0F;
}
bool isZero(unsigned word) {
    return word == 0;
}

/// A device that has nothing to read just now (EAGAIN) is not at fault.
Result<void> tryDevice(const std::string& path) {
    const FileDescriptor file = tryOpen(path, O_RDONLY | O_NONBLOCK);
    char byte;
    if (file.isOpen() && (tryRead(file, &byte, 1) >= 0 || errno == EAGAIN))
        return {};
    return Fault{path + ": can't read: " + reasonOf(errno)};
}

/// Drivers report 0 for an unreadable device, so a 0 counts only after the device itself could be
/// read.
template <class Driver>
auto readSurely(Driver& driver, const std::string& path) -> decltype(readOnce(driver)) {
    auto value = readOnce(driver);
    if (!value || !isZero(*value))
        return value;
    const Result<void> device = tryDevice(path);
    if (!device)
        return Fault{device.fault()};
    return readOnce(driver);
}

/// Reads until the state `isReached`, at least twice, however slow this process is. The kernel
/// writes to an LED on a bus only after the write call has returned; until then the old state is
/// read.
Result<unsigned> readUntil(ILedControl& led, const std::string& path,
                           const std::function<bool(unsigned)>& isReached) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(200);
    Result<unsigned> state = readSurely(led, path);
    for (bool isLast = false; !isLast && state && !isReached(*state);) {
        isLast = Clock::now() >= end;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        state = readSurely(led, path);
    }
    return state;
}

Fault mismatch(const std::string& held, const std::string& written) {
    return {"the device holds " + held + " after " + written + " was written"};
}

Result<IFanControl::FanSpeed> setSpeed(IFanControl& fan, const std::string& path,
                                       IFanControl::FanSpeed speed) {
    if (!fan.setFanSpeed(speed).isSuccess())
        return Fault{"the speed can't be written"};
    Result<IFanControl::FanSpeed> held = readSurely(fan, path);
    if (held && *held != speed)
        return mismatch(speedName(*held), speedName(speed));
    return held;
}

Result<unsigned> setState(ILedControl& led, const std::string& path, unsigned state) {
    if (!led.setLedStatus(state).isSuccess())
        return Fault{"the state can't be written"};
    Result<unsigned> held =
        readUntil(led, path, [state](unsigned shown) { return shown == state; });
    if (held && *held != state)
        return mismatch(std::to_string(*held), std::to_string(state));
    return held;
}

template <class Driver, class Value>
void describe(Driver& driver, Reading<Value>& reading) {
    String description;
    static_cast<void>(driver.getDescription(description)); // always succeeds
    reading.description = description.c_str();
}

void describe(IThermalSensor& sensor, TemperatureReading& reading) {
    describe<IThermalSensor, float>(sensor, reading);
    static_cast<void>(sensor.getMaxTemperature(reading.maximum)); // always succeeds
}

/// The driver only knows that its device can't be used. The reason comes from the host, or else
/// from the device file.
Fault explained(const Host& host, const std::string& name, const std::string& fault) {
    if (const auto known = host.faultOf(name))
        return {*known};
    const std::string path = host.pathOf(name);
    try {
        if (!path.empty())
            expectReadable(path);
    } catch (const Error& error) {
        return {fault + ": " + error.what()};
    }
    return {fault};
}

/// Looks driver `name` up as an `Interface` and makes a reading of it. `operation` takes the driver
/// and the path of its device file and returns the value; the driver's lock is held meanwhile.
template <class Interface, class DeviceReading, class Operation>
DeviceReading withDriver(const Host& host, const std::string& name, Operation operation) {
    DeviceReading reading;
    reading.name = name;
    TYPPtr<Interface> driver;
    const XCode status = DRIVER::INSTANCE()->getInterface(name.c_str(), driver);
    if (!status.isSuccess()) {
        const String& message = status.getMessage();
        reading.value = Fault{message.isEmpty() ? "is another kind of driver" : message.c_str()};
        return reading;
    }
    const auto hold = driver.getLock();
    describe(*driver, reading);
    reading.value = operation(*driver, host.pathOf(name));
    if (!reading.value)
        reading.value = explained(host, name, reading.value.fault());
    return reading;
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
    return withDriver<IFanControl, FanReading>(host, name, readSurely<IFanControl>);
}

TemperatureReading readTemperature(const Host& host, const std::string& name) {
    return withDriver<IThermalSensor, TemperatureReading>(host, name, readSurely<IThermalSensor>);
}

PowerReading readPower(const Host& host, const std::string& name) {
    return withDriver<IPowerStatus, PowerReading>(host, name, readSurely<IPowerStatus>);
}

LedReading readLed(const Host& host, const std::string& name) {
    return withDriver<ILedControl, LedReading>(host, name, readSurely<ILedControl>);
}

LedReading awaitLed(const Host& host, const std::string& name,
                    const std::function<bool(unsigned)>& isReached) {
    return withDriver<ILedControl, LedReading>(
        host, name,
        [&](ILedControl& led, const std::string& path) { return readUntil(led, path, isReached); });
}

FanReading setFan(const Host& host, const std::string& name, IFanControl::FanSpeed speed) {
    return withDriver<IFanControl, FanReading>(
        host, name,
        [speed](IFanControl& fan, const std::string& path) { return setSpeed(fan, path, speed); });
}

LedReading setLed(const Host& host, const std::string& name, unsigned state) {
    return withDriver<ILedControl, LedReading>(
        host, name,
        [state](ILedControl& led, const std::string& path) { return setState(led, path, state); });
}

} // namespace board
