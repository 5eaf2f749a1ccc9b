#pragma once

#include <string>

#include "board/Report.h"

namespace board {

/// The report's figures in the Prometheus text format, one family of samples for each figure.
/// Values that can't be read are omitted, so that a monitor sees a gap instead of a false value.
/// Each sample of a simulated board has the label simulated="true".
std::string toMetrics(const Report& report, bool isSimulated);

} // namespace board
