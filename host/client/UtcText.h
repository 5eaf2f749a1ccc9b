#pragma once

#include <string>

#include "TYTime.h"

namespace board {

/// A calendar time as a host states it: in UTC and to the millisecond, by RFC 3339.
std::string utcText(const TYTime& time);

} // namespace board
