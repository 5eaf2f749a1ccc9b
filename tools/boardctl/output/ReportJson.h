#pragma once

#include <nlohmann/json.hpp>

#include "board/Report.h"

namespace boardctl {

/// What `boardctl info --format json` prints. If a value can't be read, it is null, and "error" has
/// the reason.
nlohmann::ordered_json reportToJson(const board::Report& report);

} // namespace boardctl
