#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Result.h"

namespace board {

/// A hardware monitor: a chip, or a driver, with sensors and fans (the kernel's class hwmon).
struct Monitor {
    std::string folder;       ///< where its files are
    std::string busDevice;    ///< its device's name on its bus, such as "1-0048"; may be empty
    Result<std::string> name; ///< what its driver calls it; the same for devices of one kind
};

/// All monitors, in the kernel's order, which may change at each boot.
std::vector<Monitor> monitorsOf(const std::string& sysfs);

/// The files of a monitor, without those that every device has.
std::vector<std::string> filesOf(const Monitor& monitor);

/// What a kind of sensor measures. The number in a sensor's file counts steps; a step is 10 to the
/// power of -`decimals` units.
struct Quantity {
    const char* kind; ///< how the file's name begins, such as "temp"
    const char* unit; ///< such as "C"; for people
    int decimals;
};

/// One sensor of a monitor.
struct Sensor {
    std::string file;          ///< such as "temp1_input"
    std::string channel;       ///< such as "temp1"
    const Quantity* quantity;  ///< valid as long as the program runs
    Result<std::string> label; ///< what the driver calls the sensor; may be empty
    Result<long long> value;   ///< in the quantity's steps
    /// By name, such as "max", and in the quantity's steps; only those limits that the sensor has.
    std::vector<std::pair<std::string, Result<long long>>> limits;
};

/// One fan output of a monitor.
struct Pwm {
    std::string file; ///< such as "pwm1"
    Result<long long> value;
    std::string enable;                    ///< file of its mode; empty if it has none
    std::optional<Result<long long>> mode; ///< 0 full speed, 1 manual, others automatic
    std::string tach;                      ///< file with the speed of its fan; empty if none
};

std::vector<Sensor> sensorsOf(const Monitor& monitor);
std::vector<Pwm> pwmsOf(const Monitor& monitor);

} // namespace board
