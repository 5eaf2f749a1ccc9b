#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "XCode.h"

namespace faults {

/// Runs a step while its calls are counted. Returns its code, or "thrown" if memory ran out.
using Attempt = std::function<std::string(const std::function<XCode()>&)>;

/// Prepares something, attempts a step and returns the result as text.
using Operation = std::function<std::string(const Attempt&)>;

/// Pairs a pattern of faults, such as "read#2 EIO" for the second read, with a pattern of the text
/// that must result. The first match counts; "" matches every fault except those of memory.
using Expected = std::vector<std::pair<std::string, std::string>>;

/// Runs the operation without a failure, then once for each way in which one of the calls in its
/// step can fail. No descriptor and no memory may leak.
void sweep(const Operation& operation, const Expected& expected);

} // namespace faults
