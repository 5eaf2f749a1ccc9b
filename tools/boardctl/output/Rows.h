#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "InfoContainer.h"

/// The rows of a driver's or descriptor's report.
namespace boardctl {

/// The bytes of a framework text.
std::string toStdString(const String& text);

/// For people: indented by level, values in a column.
std::string rowsText(const InfoContainer& rows);

/// Prints the `rowsText` of the rows on standard output.
void printRows(const InfoContainer& rows);

nlohmann::ordered_json rowsToJson(const InfoContainer& rows);

} // namespace boardctl
