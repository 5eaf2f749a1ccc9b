#pragma once

#include <chrono>
#include <string>

#include <gtest/gtest.h>
#include <sched.h>

/// Helpers for the tests on the emulated board. The tests write to devices, so their program ends
/// at once if it does not run on that board.
namespace onboard {

/// The shipped profile for a board with kernel drivers.
constexpr char PROFILE[] = "/etc/board.toml";

/// Objects of the emulator, outside the emulated machine.
constexpr char SENSOR[] = "/machine/peripheral/sensor";
constexpr char LED_CHIP[] = "/machine/peripheral/leds";
constexpr char LINES[] = "/machine/soc/gpio";
constexpr char STATUS_LINE[] = "gpioB0";
constexpr char SECOND_LINE[] = "gpioB1";
constexpr char BUTTON_LINE[] = "gpioC0";

/// Sets and reads properties of such objects as JSON values. Throw if the emulator refuses.
void set(const std::string& object, const std::string& property, const std::string& value);
std::string get(const std::string& object, const std::string& property);

/// The bytes of the EEPROM, read from the emulator's file and not through the board.
std::string eepromOutside();

/// The path of a device that is named as in a profile. Throws if there is none.
std::string locate(const std::string& device);

/// The text of an attribute without its newline, or an error such as "ENODEV" if reading fails.
std::string read(const std::string& path);
/// Writes `bytes` in one call at the offset `at`. Returns the number of bytes written, or an error
/// such as "EINVAL".
std::string write(const std::string& path, const std::string& bytes, long at = 0);

/// Detaches a device from its driver while it lives. `driver` is the driver's folder below
/// /sys/bus.
class Unbound {
public:
    Unbound(const std::string& driver, const std::string& device);
    ~Unbound();
    Unbound(const Unbound&) = delete;
    Unbound& operator=(const Unbound&) = delete;

private:
    const std::string m_driver;
    const std::string m_device;
};

/// Polls until `isReached` returns true. Returns false after half a minute, which only a fault
/// takes.
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
