#pragma once

#include <nlohmann/json.hpp>

namespace boardctl {

/// Prints one JSON document on standard output; with `indent` -1 on one line. Bytes that are not
/// UTF-8 become the replacement character.
///
/// If the program works on a simulated board, `"simulated": true` is added to the object, or to
/// each object of the array, so that nobody takes a made-up figure for a measured one.
void printJson(nlohmann::ordered_json json, int indent = 2);

} // namespace boardctl
