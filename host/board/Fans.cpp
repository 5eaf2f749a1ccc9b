#include "Fans.h"

#include <cstddef>

#include "DRIVER.h"
#include "Error.h"
#include "Host.h"
#include "IDriverRepository.h"

namespace board {

namespace {

constexpr const char* SPEED_NAMES[] = {"full", "high", "low", "off"};

TYPPtr<IFanControl> findFan(const std::string& name, FanReading& reading) {
    reading.name = name;
    TYPPtr<IFanControl> fan;
    const XCode status = DRIVER::INSTANCE()->getInterface(name.c_str(), fan);
    if (!status.isSuccess())
        reading.fault = status.getMessage().isEmpty() ? "is no fan" : status.getMessage().c_str();
    return fan;
}

std::string faultOf(const Host& host, const std::string& name, const char* what) {
    const std::string fault = host.faultOf(name);
    return fault.empty() ? what : fault;
}

void read(const Host& host, IFanControl& fan, FanReading& reading) {
    String description;
    const TYLockHolder hold(fan.getLock());
    static_cast<void>(fan.getDescription(description)); // always succeeds
    reading.description = description.c_str();
    if (!fan.getActualFanSpeed(reading.speed).isSuccess())
        reading.fault = faultOf(host, reading.name, "the speed can't be read");
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
    FanReading reading;
    if (const TYPPtr<IFanControl> fan = findFan(name, reading))
        read(host, *fan, reading);
    return reading;
}

FanReading setFan(const Host& host, const std::string& name, IFanControl::FanSpeed speed) {
    FanReading reading;
    const TYPPtr<IFanControl> fan = findFan(name, reading);
    if (!fan)
        return reading;
    const TYLockHolder hold(fan->getLock()); // nobody writes between the write and the read
    const bool written = fan->setFanSpeed(speed).isSuccess();
    read(host, *fan, reading);
    if (!written && reading.fault.empty())
        reading.fault = "the speed can't be written";
    else if (reading.fault.empty() && reading.speed != speed)
        reading.fault = std::string("the device holds ") + speedName(reading.speed) + " after " +
                        speedName(speed) + " was written";
    return reading;
}

} // namespace board
