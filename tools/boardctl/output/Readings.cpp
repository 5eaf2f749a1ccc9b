#include "output/Readings.h"

#include <cmath>

using nlohmann::ordered_json;

namespace boardctl {

namespace {

ordered_json describe(const board::Reading& reading, const char* key, const ordered_json& value) {
    ordered_json json = {{"name", reading.name}, {"description", reading.description}};
    json[key] = reading.fault.empty() ? value : ordered_json(nullptr);
    if (!reading.fault.empty())
        json["error"] = reading.fault;
    return json;
}

std::string known(const board::Reading& reading, const std::string& value) {
    return reading.fault.empty() ? value : "unknown";
}

// Sensors measure thousandths. A float printed in full would show digits that nobody measured.
double rounded(float celsius) {
    return std::round(static_cast<double>(celsius) * 1000) / 1000;
}

} // namespace

ordered_json toJson(const board::FanReading& fan) {
    return describe(fan, "speed", board::speedName(fan.speed));
}

ordered_json toJson(const board::TemperatureReading& temperature) {
    ordered_json json = describe(temperature, "celsius", rounded(temperature.celsius));
    json["maximum"] = temperature.maximum;
    return json;
}

ordered_json toJson(const board::PowerReading& power) {
    return describe(power, "status", power.status);
}

ordered_json toJson(const board::LedReading& led) {
    return describe(led, "state", led.state);
}

ordered_json toJson(const board::CpuReading& cpu) {
    const auto orNull = [](const std::optional<unsigned>& value) {
        return value ? ordered_json(*value) : ordered_json(nullptr);
    };
    ordered_json json = {
        {"last", orNull(cpu.last)}, {"mid", orNull(cpu.mid)}, {"longest", orNull(cpu.longest)}};
    if (!cpu.fault.empty())
        json["error"] = cpu.fault;
    return json;
}

ordered_json toJson(const board::FirmwareReading& firmware) {
    if (!firmware.fault.empty())
        return {{"version", nullptr}, {"error", firmware.fault}};
    return {{"version", firmware.version}, {"line1", firmware.line1}, {"line2", firmware.line2},
            {"line3", firmware.line3},     {"line6", firmware.line6}, {"line7", firmware.line7},
            {"line8", firmware.line8}};
}

std::string toText(const board::CpuReading& cpu) {
    if (!cpu.fault.empty())
        return "unknown";
    std::string text = std::to_string(cpu.last.value_or(0)) + " %";
    if (cpu.mid)
        text += ", " + std::to_string(*cpu.mid) + " % over 5 periods";
    if (cpu.longest)
        text += ", " + std::to_string(*cpu.longest) + " % over 14";
    return text;
}

std::string toText(const board::FanReading& fan) {
    return known(fan, board::speedName(fan.speed));
}

std::string toText(const board::TemperatureReading& temperature) {
    return known(temperature, String::format("%.3f degrees Celsius, maximum %u",
                                             rounded(temperature.celsius), temperature.maximum)
                                  .c_str());
}

std::string toText(const board::PowerReading& power) {
    return known(power, std::to_string(power.status));
}

std::string toText(const board::LedReading& led) {
    return known(led, std::to_string(led.state));
}
} // namespace boardctl
