#pragma once

#include <string>
#include <vector>

#include "base/Result.h"

/// Functions that read sysfs, in which a folder is a device and a file is one of its values.
namespace board {

/// The names in a folder, sorted with their numbers in numeric order: "pwm2" is before "pwm10".
/// Empty if the folder can't be read.
std::vector<std::string> entriesOf(const std::string& folder);

/// The last part of the path that a symbolic link holds; empty if `link` is not a symbolic link.
std::string linkedName(const std::string& link);

/// The first line of a file, without the blanks at its end. A fault contains the path and the
/// system's reason.
Result<std::string> readText(const std::string& path);

/// The same for a file that must hold a decimal number. A fault shows what the file holds instead.
Result<long long> readNumber(const std::string& path);

} // namespace board
