#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "client/StatusClient.h"
#include "program/Options.h"

namespace boardctl {

/// The host that runs the board that the call names. Throws WrongCall if it names none, or a
/// simulated board made for the call, and board::Error if no host answers.
board::FoundHost runningHost(const Options& options);

/// The member as text for people: a text as it is, a number or a truth value as JSON, and "" for
/// null, for anything else, and if there is no such member. A host of another version may answer
/// with other members than this program expects.
std::string textOf(const nlohmann::ordered_json& object, const char* key);

/// The elements of the member; none if it is not an array.
nlohmann::ordered_json listOf(const nlohmann::ordered_json& object, const char* key);

/// "on" or "off".
std::string litText(const nlohmann::ordered_json& led);

/// The row that drives an LED: what it is, what started it and when it ends.
std::string driveText(const nlohmann::ordered_json& drive);

} // namespace boardctl
