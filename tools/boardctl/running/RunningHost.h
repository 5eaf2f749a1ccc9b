#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "client/StatusClient.h"
#include "program/Options.h"

namespace boardctl {

/// Finds the running host of the board that the call names. Throws WrongCall if the call names no
/// board or has --sim, and board::Error if no host answers.
board::FoundHost runningHost(const Options& options);

/// The member as text for people: a string without its quotes, a number or boolean as JSON. Returns
/// "" if the member is missing or is anything else, because a host of another version may answer
/// with other members than this program expects.
std::string textOf(const nlohmann::ordered_json& object, const char* key);

/// The elements of the member; none if it is not an array.
nlohmann::ordered_json listOf(const nlohmann::ordered_json& object, const char* key);

/// "on" or "off".
std::string litText(const nlohmann::ordered_json& led);

/// The row that drives an LED: what it is, what started it and when it ends.
std::string driveText(const nlohmann::ordered_json& drive);

} // namespace boardctl
