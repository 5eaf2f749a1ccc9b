#include "output/Readings.h"

#include <cmath>
#include <cstdlib>

#include "watch/JsonValues.h"

using board::orNull;
using board::roundedCelsius;
using nlohmann::ordered_json;

namespace boardctl {

namespace {

template <class Reading>
ordered_json describe(const Reading& reading, const ordered_json& values) {
    ordered_json json = {{"name", reading.name}, {"description", reading.description}};
    json.update(values);
    if (const auto fault = reading.fault())
        json["error"] = *fault;
    return json;
}

const char* const UNKNOWN = "unknown";

} // namespace

ordered_json toJson(const board::FanReading& fan) {
    ordered_json values = {
        {"speed", fan.value ? ordered_json(board::speedName(*fan.value)) : nullptr}};
    if (fan.rpm)
        values["rpm"] = *fan.rpm ? ordered_json(**fan.rpm) : nullptr;
    return describe(fan, values);
}

ordered_json toJson(const board::TemperatureReading& temperature) {
    ordered_json json =
        describe(temperature,
                 {{"celsius", temperature.value ? ordered_json(roundedCelsius(*temperature.value))
                                                : nullptr}});
    json["maximum"] = temperature.maximum;
    return json;
}

ordered_json toJson(const board::PowerReading& power) {
    return describe(power, {{"status", power.value ? ordered_json(*power.value) : nullptr}});
}

ordered_json toJson(const board::LedReading& led) {
    return describe(led, {{"state", led.value ? ordered_json(*led.value) : nullptr}});
}

ordered_json toJson(const board::Result<board::CpuReading>& cpu) {
    if (!cpu)
        return {{"last", nullptr}, {"mid", nullptr}, {"longest", nullptr}, {"error", cpu.fault()}};
    return {{"last", cpu->last}, {"mid", orNull(cpu->mid)}, {"longest", orNull(cpu->longest)}};
}

ordered_json toJson(const board::Result<board::FirmwareInfo>& firmware) {
    if (!firmware)
        return {{"version", nullptr}, {"error", firmware.fault()}};
    return {{"version", firmware->version}, {"line1", firmware->line1}, {"line2", firmware->line2},
            {"line3", firmware->line3},     {"line6", firmware->line6}, {"line7", firmware->line7},
            {"line8", firmware->line8}};
}

std::string toText(const board::Result<board::CpuReading>& cpu) {
    if (!cpu)
        return UNKNOWN;
    std::string text = std::to_string(cpu->last) + " %";
    if (cpu->mid)
        text += ", " + std::to_string(*cpu->mid) + " % over 5 periods";
    if (cpu->longest)
        text += ", " + std::to_string(*cpu->longest) + " % over 14";
    return text;
}

std::string toText(const board::FanReading& fan) {
    if (!fan.value)
        return UNKNOWN;
    const std::string level = board::speedName(*fan.value);
    return fan.rpm && *fan.rpm ? level + ", " + std::to_string(**fan.rpm) + " rpm" : level;
}

std::string toText(const board::TemperatureReading& temperature) {
    if (!temperature.value)
        return UNKNOWN;
    const long long thousandths = std::llround(1000.0 * *temperature.value);
    const std::string digits = std::to_string(1000 + std::abs(thousandths) % 1000).substr(1);
    return (thousandths < 0 ? "-" : "") + std::to_string(std::abs(thousandths) / 1000) + "." +
           digits + " degrees Celsius, maximum " + std::to_string(temperature.maximum);
}

std::string toText(const board::PowerReading& power) {
    return power.value ? std::to_string(*power.value) : UNKNOWN;
}

std::string toText(const board::LedReading& led) {
    return led.value ? std::to_string(*led.value) : UNKNOWN;
}

} // namespace boardctl
