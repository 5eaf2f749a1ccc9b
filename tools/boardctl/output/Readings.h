#pragma once

#include <iostream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "String.h"
#include "base/Text.h"
#include "board/CpuMeter.h"
#include "board/Firmware.h"
#include "board/Readings.h"
#include "output/Json.h"
#include "output/Messages.h"
#include "program/Options.h"

namespace boardctl {

/// `{"name":...,"description":...,"speed":...}`; instead of "speed", a sensor has "celsius" and
/// "maximum", a power supply "status", and an LED "state". A fan with a tachometer also has "rpm".
/// If a value is unknown, it is null, and "error" has the reason.
nlohmann::ordered_json toJson(const board::FanReading& fan);
nlohmann::ordered_json toJson(const board::TemperatureReading& temperature);
nlohmann::ordered_json toJson(const board::PowerReading& power);
nlohmann::ordered_json toJson(const board::LedReading& led);

/// `{"last":...,"mid":...,"longest":...}` in percent. A value is null until its span has passed. If
/// there is an "error", all values are null.
nlohmann::ordered_json toJson(const board::Result<board::CpuReading>& cpu);
/// `{"version":...,"line1":...}`. The version is null if there is an "error".
nlohmann::ordered_json toJson(const board::Result<board::FirmwareInfo>& firmware);

/// Only the value, for people; "unknown" if there is none.
std::string toText(const board::FanReading& fan);
std::string toText(const board::TemperatureReading& temperature);
std::string toText(const board::PowerReading& power);
std::string toText(const board::LedReading& led);
std::string toText(const board::Result<board::CpuReading>& cpu);

template <class Reading>
nlohmann::ordered_json readingsToJson(const std::vector<Reading>& readings) {
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    for (const Reading& reading : readings)
        json.push_back(toJson(reading));
    return json;
}

/// Prints readings in the chosen form, and a message for each that failed. Returns the exit status.
template <class Reading>
int show(const std::vector<Reading>& readings, bool asJson) {
    int status = DONE;
    for (const Reading& reading : readings) {
        if (!asJson && reading.value)
            std::cout << board::printable(reading.name) << ": " << toText(reading) << "\n";
        if (const auto fault = reading.fault()) {
            complain("'" + reading.name + "': " + *fault);
            status = FAILED;
        }
    }
    if (asJson)
        printJson(readingsToJson(readings));
    return status;
}

} // namespace boardctl
