#pragma once

#include <nlohmann/json.hpp>

namespace boardctl {

/// Prints one JSON document on standard output; with `indent` -1 on one line. Bytes that are not
/// UTF-8 become the replacement character.
void printJson(const nlohmann::ordered_json& json, int indent = 2);

} // namespace boardctl
