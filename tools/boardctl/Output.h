#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "Fans.h"
#include "InfoContainer.h"

/// Text as it may go to a terminal: bytes that are not printable ASCII, as "\x1b".
std::string printable(const String& text);

/// Rows of an information dump for people: indented by level, values in a column.
void printRows(const InfoContainer& rows);

nlohmann::ordered_json rowsToJson(const InfoContainer& rows);

/// `{"name":...,"description":...,"speed":...}`; an unknown speed is null beside "error".
nlohmann::ordered_json fanToJson(const board::FanReading& fan);

/// One JSON document on standard output. Bytes that are not UTF-8 become the replacement character.
void printJson(const nlohmann::ordered_json& json, int indent = 2);

/// A message on standard error.
void complain(const std::string& what);

/// Whether all output was taken; says so where it was not.
bool flushOutput();
