#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace boardctl {

/// The document as text, followed by a newline. With `indent` -1, the text is on one line. Bytes
/// that are not UTF-8 become the replacement character.
///
/// If the program works on a simulated board, `"simulated": true` is added to the object, or to
/// each object of the array, so that nobody takes a made-up figure for a measured one.
std::string jsonText(nlohmann::ordered_json json, int indent = 2);

/// Prints the `jsonText` of the document on standard output.
void printJson(nlohmann::ordered_json json, int indent = 2);

} // namespace boardctl
