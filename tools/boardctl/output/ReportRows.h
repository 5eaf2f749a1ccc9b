#pragma once

#include "InfoContainer.h"
#include "board/Report.h"

namespace boardctl {

/// All rows of a report, with each device's value below its driver's header.
InfoContainer dumpOf(const board::Report& report);

} // namespace boardctl
