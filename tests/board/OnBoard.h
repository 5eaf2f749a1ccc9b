#pragma once

#include <chrono>
#include <string>

#include <gtest/gtest.h>
#include <sched.h>

/// What the tests on the emulated board share. They write its devices, and run nowhere else: their
/// program ends at once where it is not on that board.
namespace onboard {

/// The profile that is shipped for a board with drivers of the kernel.
constexpr char PROFILE[] = "/etc/board.toml";

/// Objects of the emulated machine, seen from outside.
constexpr char SENSOR[] = "/machine/peripheral/sensor";
constexpr char LED_CHIP[] = "/machine/peripheral/leds";
constexpr char LINES[] = "/machine/soc/gpio";
constexpr char STATUS_LINE[] = "gpioB0";
constexpr char SECOND_LINE[] = "gpioB1";
constexpr char BUTTON_LINE[] = "gpioC0";

/// Sets and reads properties of such objects, values as JSON. Throw where the machine refuses.
void set(const std::string& object, const std::string& property, const std::string& value);
std::string get(const std::string& object, const std::string& property);

/// The bytes of the EEPROM, read past the board in the file that stands behind it.
std::string eepromOutside();

/// Where the kernel shows a device, named as in a profile. Throws where it is not there.
std::string locate(const std::string& device);

/// What an attribute reads as, without its newline; "ENODEV" and so on where it can't be read.
std::string read(const std::string& path);
/// One write of `bytes`, `at` an offset where that is not 0: how many were taken, or "EINVAL" and
/// so on.
std::string write(const std::string& path, const std::string& bytes, long at = 0);

/// A device without its driver while this lives, as after the driver was unloaded. `driver` is its
/// folder below /sys/bus.
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

/// Asks again until `isReached`; false after half a minute, which only a fault takes.
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
