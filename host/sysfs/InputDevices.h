#pragma once

#include <string>
#include <vector>

#include "base/Result.h"

namespace board {

/// An input device that has keys.
struct InputDevice {
    std::string file;                    ///< such as "/dev/input/event0"
    Result<std::string> name;            ///< what its driver calls it
    Result<std::vector<unsigned>> codes; ///< the kernel's codes of its keys, ascending
};

/// All input devices except those without keys, in the kernel's order, which may change at each
/// boot. Reads only their descriptions, because this user may not be permitted to open the devices.
std::vector<InputDevice> inputDevicesOf(const std::string& sysfs);

/// Ascending numbers for people: "1 to 10, 28".
std::string rangesOf(const std::vector<unsigned>& numbers);

} // namespace board
