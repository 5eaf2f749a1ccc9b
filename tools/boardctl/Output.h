#pragma once

#include <iostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "CommandLine.h"
#include "InfoContainer.h"
#include "base/Text.h"
#include "board/Report.h"

/// The bytes of a framework text.
std::string textOf(const String& text);

/// Rows of an information dump for people: indented by level, values in a column.
void printRows(const InfoContainer& rows);

nlohmann::ordered_json rowsToJson(const InfoContainer& rows);

/// One JSON document on standard output. Bytes that are not UTF-8 become the replacement character.
void printJson(const nlohmann::ordered_json& json, int indent = 2);

/// A message on standard error.
void complain(const std::string& what);

/// What was read, as `{"name":...,"description":...,"speed":...}` (or "celsius" and "maximum",
/// "status", "state"); a value that is not known is null beside "error".
nlohmann::ordered_json toJson(const board::FanReading& fan);
nlohmann::ordered_json toJson(const board::TemperatureReading& temperature);
nlohmann::ordered_json toJson(const board::PowerReading& power);
nlohmann::ordered_json toJson(const board::LedReading& led);

/// `{"last":...,"mid":...,"longest":...}` in percent; null where a span has not passed yet, or
/// beside "error".
nlohmann::ordered_json toJson(const board::CpuReading& cpu);
/// `{"version":...,"line1":...}`; null beside "error".
nlohmann::ordered_json toJson(const board::FirmwareReading& firmware);

/// The value alone for people; "unknown" where it is.
std::string toText(const board::FanReading& fan);
std::string toText(const board::TemperatureReading& temperature);
std::string toText(const board::PowerReading& power);
std::string toText(const board::LedReading& led);
std::string toText(const board::CpuReading& cpu);

/// All rows of a report, each device's value below its driver's header.
InfoContainer dumpOf(const board::Report& report);

template <class AReading>
nlohmann::ordered_json readingsToJson(const std::vector<AReading>& readings) {
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    for (const AReading& reading : readings)
        json.push_back(toJson(reading));
    return json;
}

/// Prints readings in the chosen form and complains of those with a fault. Returns the exit status.
template <class AReading>
int show(const std::vector<AReading>& readings, bool asJson) {
    int status = DONE;
    for (const AReading& reading : readings) {
        if (!asJson && reading.fault.empty())
            std::cout << board::printable(reading.name) << ": " << toText(reading) << "\n";
        if (!reading.fault.empty()) {
            complain("'" + reading.name + "': " + reading.fault);
            status = FAILED;
        }
    }
    if (asJson)
        printJson(readingsToJson(readings));
    return status;
}

/// Whether all output was taken; where it was not, says so once.
bool flushOutput();
