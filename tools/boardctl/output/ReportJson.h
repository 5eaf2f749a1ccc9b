#pragma once

#include <nlohmann/json.hpp>

#include "board/Report.h"

namespace boardctl {

/// What `boardctl info --format json` prints. A value that can't be read is null beside an "error".
nlohmann::ordered_json reportToJson(const board::Report& report);

} // namespace boardctl
