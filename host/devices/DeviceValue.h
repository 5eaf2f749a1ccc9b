#pragma once

#include <cstdint>
#include <string>

#include "base/Error.h"
#include "base/Result.h"
#include "profile/NamedPath.h"
#include "sysfs/DeviceLocator.h"

/// Reads the number in a device file. The drivers report 0 for a file without a number, so the host
/// checks the file before it trusts a driver.
///
/// A number may have blanks around it and zero bytes after it. It is a fault if the file holds
/// anything else, a number that devices of the kind can't have, or more characters than their
/// driver reads. The fault shows the content: "PATH: holds 'N/A' (expected a number from 0 to
/// 255)". No function waits for a device that has nothing to read.
namespace board {

/// A fan's level, 0 to `maximum`.
Result<std::int32_t> readFanLevel(const std::string& path, std::uint32_t maximum);

/// A temperature in thousandths of a degree Celsius, from absolute zero to 1000 degrees.
Result<std::int32_t> readThousandths(const std::string& path);

/// The status word of a power supply, 0 to 9999.
Result<std::int32_t> readPowerStatus(const std::string& path);

/// The brightness of an LED: 0 to 9999, and at most what the file "max_brightness" in the same
/// folder holds, if there is one.
Result<std::int32_t> readBrightness(const std::string& path);

/// A fan's speed in revolutions per minute, 0 or more.
Result<std::int32_t> readRpm(const std::string& path);

/// A number that selects how a fan is controlled, 0 or more.
Result<std::int32_t> readFanMode(const std::string& path);

/// The bytes that the file holds, in one read of at most 4096 bytes. A fault names the path and the
/// system's reason.
Result<std::string> readContent(const std::string& path);

/// Replaces what the file holds, in one write. A fault names the path and the system's reason.
Result<void> writeContent(const std::string& path, const std::string& bytes);

/// Finds a file that the profile names, calls `use` with its path and returns the Result. A fault
/// begins with the place in the profile that names the file.
template <class Use>
auto withNamedFile(const NamedPath& named, const DeviceLocator& locator, Use use)
    -> decltype(use(named.path)) {
    try {
        auto result = use(locator.locate(named.path));
        if (result)
            return result;
        return Fault{named.place + ": " + result.fault()};
    } catch (const Error& error) {
        return Fault{named.place + ": " + error.what()};
    }
}

} // namespace board
