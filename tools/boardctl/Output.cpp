#include "Output.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <iostream>
#include <utility>

#include <unistd.h>

#include "StopSignals.h"
#include "base/Text.h"

using nlohmann::ordered_json;

std::string textOf(const String& text) {
    return std::string(text.c_str(), text.length());
}

void printRows(const InfoContainer& rows) {
    constexpr unsigned INDENT = 2;
    const auto keyOf = [](const InfoContainer::Row& row) {
        return std::string(std::size_t{row.level} * INDENT, ' ') +
               board::printable(textOf(row.key));
    };
    std::size_t column = 0;
    for (const auto& row : rows.getRows())
        column = std::max(column, board::columnsOf(keyOf(row)));
    for (const auto& row : rows.getRows()) {
        const std::string key = keyOf(row);
        std::cout << key;
        if (!row.value.isEmpty())
            std::cout << std::string(column + 2 - board::columnsOf(key), ' ')
                      << board::printable(textOf(row.value));
        std::cout << "\n";
    }
}

ordered_json rowsToJson(const InfoContainer& rows) {
    ordered_json json = ordered_json::array();
    for (const auto& row : rows.getRows())
        json.push_back({{"level", row.level},
                        {"index", row.index},
                        {"key", textOf(row.key)},
                        {"value", textOf(row.value)}});
    return json;
}

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

// Thousandths are what sensors give; a float printed whole would show digits that nobody measured.
double rounded(float celsius) {
    return std::round(static_cast<double>(celsius) * 1000) / 1000;
}

template <class AReading>
void addRows(InfoContainer& rows, const std::vector<AReading>& readings, const String& driver,
             const char* key) {
    for (const AReading& reading : readings)
        if (driver == String(reading.name.c_str())) {
            rows.add(1, 0, "Description", reading.description.c_str());
            rows.add(1, 0, key, toText(reading).c_str());
        }
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

InfoContainer dumpOf(const board::Report& report) {
    InfoContainer rows;
    for (const board::DriverReport& driver : report.drivers) {
        for (const auto& row : driver.rows.getRows())
            rows.add(row.level, row.index, row.key, row.value);
        // A LED's own rows say all; of the others the driver's are but a header.
        addRows(rows, report.fans, driver.name.c_str(), "Speed");
        addRows(rows, report.temperatures, driver.name.c_str(), "Temperature");
        addRows(rows, report.powers, driver.name.c_str(), "Status");
    }
    if (report.cpu) {
        rows.add(0, 0, "CPU load", "");
        rows.add(1, 0, "Last 100 ms", toText(*report.cpu).c_str());
    }
    if (report.firmware) {
        rows.add(0, 0, "Firmware", "");
        rows.add(1, 0, "Version",
                 report.firmware->fault.empty() ? report.firmware->version.c_str() : "unknown");
    }
    return rows;
}

void printJson(const ordered_json& json, int indent) {
    std::cout << json.dump(indent, ' ', false, ordered_json::error_handler_t::replace) << "\n";
}

void complain(const std::string& what) {
    if (!StopSignals::waitWritable(STDERR_FILENO))
        return;
    std::cerr << "boardctl: " << board::printable(what) << "\n";
}

bool flushOutput() {
    errno = 0;
    if (std::cout.flush())
        return true;
    static bool isTold = false;
    if (!std::exchange(isTold, true) &&
        !StopSignals::isAsked()) // a call that was interrupted is no news then
        complain(std::string("can't write to standard output") +
                 (errno != 0 ? std::string(": ") + std::strerror(errno) : ""));
    return false;
}
