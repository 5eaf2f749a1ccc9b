#include "board/Readings.h"

#include <cerrno>
#include <chrono>
#include <thread>

#include "DRIVER.h"
#include "IDriverRepository.h"
#include "ILedControl.h"
#include "IPowerStatus.h"
#include "IThermalSensor.h"
#include "base/Error.h"
#include "base/File.h"
#include "board/Host.h"
#include "devices/DeviceValue.h"
#include "devices/HostedFan.h"

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

Result<std::int32_t> numberIn(const IFanControl&, const Device& device) {
    return readFanLevel(device.path, device.maximum);
}
Result<std::int32_t> numberIn(const IThermalSensor&, const Device& device) {
    return readThousandths(device.path);
}
Result<std::int32_t> numberIn(const IPowerStatus&, const Device& device) {
    return readPowerStatus(device.path);
}
Result<std::int32_t> numberIn(const ILedControl&, const Device& device) {
    return readBrightness(device.path);
}

/// A driver reports 0 for a device that holds no number or can't be read. So the host first reads
/// the device itself. Then the driver reads the device; if that read fails, its reason is in
/// `errno`.
template <class Driver>
auto readSurely(Driver& driver, const Device& device) -> decltype(readOnce(driver)) {
    const Result<std::int32_t> number = numberIn(driver, device);
    if (!number)
        return Fault{number.fault()};
    errno = 0;
    auto value = readOnce(driver);
    if (errno != 0)
        return Fault{device.path + ": can't read: " + reasonOf(errno)};
    return value;
}

/// Reads until `isReached` accepts the brightness, a read fails or 200 ms have passed. If
/// `isReached` rejects the first brightness, reads at least once more, however slow this process
/// is. The kernel writes to an LED on a bus only after the write call has returned; until then, the
/// old state is read.
Result<unsigned> readUntil(ILedControl& led, const Device& device,
                           const std::function<bool(unsigned)>& isReached) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(200);
    Result<unsigned> state = readSurely(led, device);
    for (bool isLast = false; !isLast && state && !isReached(*state);) {
        isLast = Clock::now() >= end;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        state = readSurely(led, device);
    }
    return state;
}

Result<IFanControl::FanSpeed> setSpeed(IFanControl& fan, const HostedFan& hosted,
                                       const Device& device, IFanControl::FanSpeed speed) {
    const Attempt attempt([&] { return fan.setFanSpeed(speed); });
    if (hosted.fault())
        return Fault{*hosted.fault()};
    if (!attempt.isDone)
        return Fault{device.path + ": can't write: " + reasonOf(attempt.error)};
    Result<IFanControl::FanSpeed> held = readSurely(fan, device);
    if (held && *held != speed)
        return attempt.refusal(device, speedName(*held), speedName(speed));
    return held;
}

Result<unsigned> setBrightness(ILedControl& led, const Device& device, unsigned brightness) {
    const Attempt attempt([&] { return led.setLedStatus(brightness); });
    if (!attempt.isDone)
        return Fault{device.path + ": can't write: " + reasonOf(attempt.error)};
    Result<unsigned> held =
        readUntil(led, device, [brightness](unsigned shown) { return shown == brightness; });
    if (held && *held != brightness)
        return attempt.refusal(device, std::to_string(*held), std::to_string(brightness));
    return held;
}

void describe(const Device& device, TemperatureReading& reading) {
    reading.maximum = device.maximum;
}
template <class DeviceReading>
void describe(const Device&, DeviceReading&) {}

/// Looks driver `name` up as an `Interface` and makes a reading of it. `operation` takes the driver
/// and its device and returns the value; the driver's lock is held meanwhile.
template <class Interface, class DeviceReading, class Operation>
DeviceReading withDriver(const Host& host, const std::string& name, Operation operation) {
    DeviceReading reading;
    reading.name = name;
    const Device* const device = host.find(name);
    if (device) {
        reading.description = device->description;
        describe(*device, reading);
    }
    TYPPtr<Interface> driver;
    const XCode status = DRIVER::INSTANCE()->getInterface(name.c_str(), driver);
    if (!status.isSuccess()) {
        const String& message = status.getMessage();
        reading.value = Fault{message.isEmpty() ? "is another kind of driver" : message.c_str()};
    } else if (!device) {
        reading.value = Fault{"is not a device of this host"};
    } else if (device->fault) {
        reading.value = Fault{*device->fault};
    } else {
        const auto hold = driver.getLock();
        reading.value = operation(*driver, *device);
    }
    return reading;
}

/// The same for an LED. `operation` returns the brightness of the LED.
template <class Operation>
LedReading withLed(const Host& host, const std::string& name, Operation operation) {
    auto reading = withDriver<ILedControl, LedReading>(host, name, operation);
    if (reading.value) {
        constexpr unsigned LIT = 1;
        reading.brightness = *reading.value;
        if (reading.brightness == host.find(name)->on)
            reading.value = LIT;
    }
    return reading;
}

template <class Operation>
FanReading withFan(const Host& host, const std::string& name, Operation operation) {
    return withDriver<IFanControl, FanReading>(host, name,
                                               [&](IFanControl& fan, const Device& device) {
                                                   return operation(fan, *host.fan(name), device);
                                               });
}

/// The file with the fan's revolutions per minute: the path that was found, or else its name in the
/// profile, for which each reading searches again.
NamedPath tachOf(const Device& device) {
    return {device.tachPath.empty() ? device.tach->path : device.tachPath, device.tach->place};
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

Attempt::Attempt(const std::function<XCode()>& write) {
    errno = 0; // a write that fails leaves its reason here
    isDone = write().isSuccess();
    error = errno;
}

Fault Attempt::refusal(const Device& device, const std::string& held,
                       const std::string& written) const {
    if (error != 0)
        return {device.path + ": can't write: " + reasonOf(error) + "; the device holds " + held};
    return {"the device holds " + held + " after " + written + " was written"};
}

std::optional<std::string> FanReading::fault() const {
    auto level = Reading::fault();
    if (!rpm || *rpm)
        return level;
    return level ? *level + "; " + rpm->fault() : rpm->fault();
}

FanReading readFan(const Host& host, const std::string& name) {
    auto reading = withDriver<IFanControl, FanReading>(host, name, readSurely<IFanControl>);
    const Device* const device = host.find(name);
    if (device && device->tach)
        reading.rpm = withNamedFile(tachOf(*device), host.locator(),
                                    [](const std::string& path) -> Result<unsigned> {
                                        const Result<std::int32_t> rpm = readRpm(path);
                                        if (!rpm)
                                            return Fault{rpm.fault()};
                                        return static_cast<unsigned>(*rpm);
                                    });
    return reading;
}

TemperatureReading readTemperature(const Host& host, const std::string& name) {
    return withDriver<IThermalSensor, TemperatureReading>(host, name, readSurely<IThermalSensor>);
}

PowerReading readPower(const Host& host, const std::string& name) {
    return withDriver<IPowerStatus, PowerReading>(host, name, readSurely<IPowerStatus>);
}

LedReading readLed(const Host& host, const std::string& name) {
    return withLed(host, name, readSurely<ILedControl>);
}

LedReading awaitLed(const Host& host, const std::string& name,
                    const std::function<bool(unsigned)>& isReached) {
    return withLed(host, name, [&](ILedControl& led, const Device& device) {
        return readUntil(led, device, isReached);
    });
}

FanReading setFan(const Host& host, const std::string& name, IFanControl::FanSpeed speed) {
    return withFan(host, name, [&](IFanControl& fan, HostedFan& hosted, const Device& device) {
        return setSpeed(fan, hosted, device, speed);
    });
}

FanReading setFanAutomatic(const Host& host, const std::string& name) {
    return withFan(host, name,
                   [&](IFanControl& fan, HostedFan& hosted,
                       const Device& device) -> Result<IFanControl::FanSpeed> {
                       const Result<void> set = hosted.setAutomatic();
                       if (!set)
                           return Fault{set.fault()};
                       return readSurely(fan, device);
                   });
}

LedReading setLed(const Host& host, const std::string& name, unsigned state) {
    const Device* const led = host.find(name);
    return setLedBrightness(host, name, state == 1 && led ? led->on : state);
}

LedReading setLedBrightness(const Host& host, const std::string& name, unsigned brightness) {
    return withLed(host, name, [&](ILedControl& led, const Device& device) {
        return setBrightness(led, device, brightness);
    });
}

} // namespace board
