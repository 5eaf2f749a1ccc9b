#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sched.h>

#include "support/Program.h"

/// Helpers for the tests on the emulated board. The tests write to devices, so their program ends
/// at once if it does not run on that board.
namespace onboard {

/// Devices, named as in a profile.
constexpr char PWM[] = "hwmon:gpio_fan/pwm1";
constexpr char PWM_ENABLE[] = "hwmon:gpio_fan/pwm1_enable";
constexpr char TEMPERATURE[] = "hwmon:tmp105/temp1_input";
constexpr char STATUS_LED[] = "led:status";       // on a line of the processor
constexpr char ALARM_LED[] = "led:pca955x:alarm"; // on a chip behind the I2C bus
constexpr char EEPROM[] = "/sys/bus/i2c/devices/1-0050/eeprom";
constexpr unsigned EEPROM_SIZE = 512;

/// Properties of the emulator's objects, outside the emulated machine.
constexpr char SENSOR[] = "/machine/peripheral/sensor temperature";
constexpr char ALARM_LIGHT[] = "/machine/peripheral/leds led0";
constexpr char BUTTON_LINE[] = "/machine/soc/gpio gpioC0";

/// Set and read such properties as JSON values. Throw if the emulator refuses.
void set(const std::string& property, const std::string& value);
std::string get(const std::string& property);
/// Whether a line of the processor, such as "B0", is high.
bool isLit(const std::string& line);
inline bool isStatusLit() {
    return isLit("B0");
}

/// The bytes of the EEPROM in hexadecimal, read from the emulator's file and not through the board.
std::string eepromOutside();

/// The path of a device. Throws if there is no such device.
std::string locate(const std::string& device);

/// The text of a device without its newline, or an error such as "ENODEV" if reading fails.
std::string read(const std::string& device);
/// Writes `bytes` in one call. Returns the number of bytes written, or an error such as "EINVAL".
std::string write(const std::string& device, const std::string& bytes);

/// The words that run boardctl with the shipped profile for a board with kernel drivers.
std::vector<std::string> boardctl(std::vector<std::string> words);
inline support::Outcome call(const std::vector<std::string>& words) {
    return support::Program(boardctl(words)).finish();
}
/// The program must succeed and have printed `out`.
void expectOutput(const support::Outcome& outcome, const std::string& out);
/// It must have exited with status 1, and its message must contain `reason`.
void expectFault(const support::Outcome& outcome, const std::string& reason);

/// Detaches `device` from its driver, calls `body`, and attaches it again. `driver` is the driver's
/// folder below /sys/bus.
template <class Body>
void whileUnbound(const std::string& driver, const std::string& device, Body body) {
    const std::string all = std::to_string(device.size());
    EXPECT_EQ(write("/sys/bus/" + driver + "/unbind", device), all) << driver;
    body();
    EXPECT_EQ(write("/sys/bus/" + driver + "/bind", device), all) << driver;
}

/// Polls until `isReached` returns true. Returns false if that takes half a minute, which happens
/// only if something is wrong.
template <class Condition>
bool until(Condition isReached) {
    using Clock = std::chrono::steady_clock;
    for (const auto end = Clock::now() + std::chrono::seconds(30); Clock::now() < end;)
        if (isReached())
            return true;
        else
            ::sched_yield();
    return false;
}

} // namespace onboard
