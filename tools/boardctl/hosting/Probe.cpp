#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "base/Error.h"
#include "base/Text.h"
#include "board/StarterProfile.h"
#include "output/Json.h"
#include "output/Rows.h"
#include "program/Command.h"
#include "program/Commands.h"
#include "program/Help.h"
#include "program/SysfsOption.h"
#include "sysfs/DeviceLocator.h"
#include "sysfs/Eeproms.h"
#include "sysfs/InputDevices.h"
#include "sysfs/LedClass.h"
#include "sysfs/Monitors.h"

using board::Result;
using nlohmann::ordered_json;

namespace boardctl {

namespace {

struct ProbeWords {
    std::string sysfs = "/sys";
    bool toml = false;
};

/// The devices that a machine has.
struct Findings {
    explicit Findings(const std::string& sysfs)
        : locator(board::DeviceLocator(sysfs).readingOnce()), monitors(board::monitorsOf(sysfs)),
          leds(board::ledsOf(sysfs)), eeproms(board::eepromsOf(sysfs)),
          inputs(board::inputDevicesOf(sysfs)) {}

    bool isNothing() const {
        return monitors.empty() && leds.empty() && eeproms.empty() && inputs.empty();
    }

    const board::DeviceLocator locator;
    const std::vector<board::Monitor> monitors;
    const std::vector<board::LedEntry> leds;
    const std::vector<board::Eeprom> eeproms;
    const std::vector<board::InputDevice> inputs;
};

/// Converts the kernel's integer to units, with all decimals: 41500 thousandths become "41.500".
std::string decimalOf(long long steps, const board::Quantity& quantity) {
    std::string digits = std::to_string(steps).substr(steps < 0 ? 1 : 0);
    const auto decimals = static_cast<std::size_t>(quantity.decimals);
    if (decimals > 0) {
        digits.insert(0, decimals + 1 - std::min(digits.size(), decimals + 1), '0');
        digits.insert(digits.size() - decimals, ".");
    }
    return (steps < 0 ? "-" : "") + digits;
}

template <class Value, class Shown>
std::string shown(const Result<Value>& value, Shown show) {
    return value ? show(*value) : "no value: " + value.fault();
}

std::string shown(const Result<long long>& number) {
    return shown(number, [](long long value) { return std::to_string(value); });
}

std::string shown(const Result<std::string>& text) {
    return shown(text, [](const std::string& value) { return value; });
}

std::string shown(const board::Sensor& sensor) {
    const auto decimal = [&](long long steps) { return decimalOf(steps, *sensor.quantity); };
    std::string text = shown(sensor.value, decimal);
    if (sensor.value)
        text += std::string(" ") + sensor.quantity->unit;
    std::vector<std::string> limits;
    for (const auto& [name, limit] : sensor.limits)
        limits.push_back(name + " " + shown(limit, decimal));
    if (!limits.empty())
        text += " (" + board::join(limits) + ")";
    const std::string label = shown(sensor.label);
    return label.empty() ? text : label + ": " + text;
}

const char* meaningOf(long long mode) {
    return mode == 0 ? "full speed" : mode == 1 ? "manual" : "automatic";
}

std::string shown(const board::Pwm& pwm) {
    std::string text = shown(pwm.value) + (pwm.value ? " of 255" : "");
    if (pwm.mode)
        text += ", mode " + shown(*pwm.mode, [](long long mode) {
                    return std::to_string(mode) + " (" + meaningOf(mode) + ")";
                });
    return text;
}

std::string shown(const board::LedEntry& led) {
    const std::string trigger = shown(led.trigger);
    return shown(led.brightness) + " of " + shown(led.maximum) +
           (trigger.empty() ? "" : ", trigger " + trigger);
}

std::string shown(const board::Eeprom& eeprom) {
    const std::string type =
        eeprom.type.empty() || eeprom.type == "EEPROM" ? "" : ", " + eeprom.type;
    return shown(eeprom.size) + (eeprom.size ? " bytes" : "") + type;
}

std::string shown(const board::InputDevice& input) {
    return shown(input.name) + ": codes " + shown(input.codes, board::rangesOf);
}

void printForPeople(const Findings& found) {
    InfoContainer rows;
    const auto add = [&](unsigned level, const std::string& key, const std::string& value) {
        rows.add(level, 0, key.c_str(), value.c_str());
    };
    for (const board::Monitor& monitor : found.monitors) {
        add(0, shown(monitor.name) + (monitor.busDevice.empty() ? "" : " at " + monitor.busDevice),
            "");
        for (const board::Sensor& sensor : board::sensorsOf(monitor))
            add(1, found.locator.nameOf(monitor, sensor.file), shown(sensor));
        for (const board::Pwm& pwm : board::pwmsOf(monitor))
            add(1, found.locator.nameOf(monitor, pwm.file), shown(pwm));
    }
    const auto addAll = [&](const char* title, const auto& devices, auto nameOf) {
        if (!devices.empty())
            add(0, title, "");
        for (const auto& device : devices)
            add(1, nameOf(device), shown(device));
    };
    const auto fileOf = [](const auto& device) { return device.file; };
    addAll("LEDs", found.leds,
           [](const board::LedEntry& led) { return board::nameOfLed(led.name); });
    addAll("EEPROMs", found.eeproms, fileOf);
    addAll("Keys", found.inputs, fileOf);
    printRows(rows);
}

/// Adds the member `key` with the value. Without a value, the member is null, and the member
/// "error" receives the reason.
template <class Value, class Convert>
void put(ordered_json& json, const std::string& key, const Result<Value>& value, Convert convert) {
    json[key] = nullptr;
    if (value)
        json[key] = convert(*value);
    else
        json["error"] =
            (json.contains("error") ? json["error"].get<std::string>() + "; " : "") + value.fault();
}

template <class Value>
void put(ordered_json& json, const std::string& key, const Result<Value>& value) {
    put(json, key, value, [](const Value& plain) { return plain; });
}

ordered_json sensorJson(const board::Sensor& sensor, const std::string& device) {
    const auto inUnits = [&](long long steps) -> ordered_json {
        if (sensor.quantity->decimals == 0)
            return steps;
        return static_cast<double>(steps) / std::pow(10, sensor.quantity->decimals);
    };
    ordered_json json = {{"device", device}};
    put(json, "label", sensor.label);
    put(json, "value", sensor.value, inUnits);
    json["unit"] = sensor.quantity->unit;
    json["limits"] = ordered_json::object();
    for (const auto& [name, limit] : sensor.limits)
        put(json["limits"], name, limit, inUnits);
    return json;
}

ordered_json monitorJson(const Findings& found, const board::Monitor& monitor) {
    ordered_json sensors = ordered_json::array(), pwms = ordered_json::array();
    for (const board::Sensor& sensor : board::sensorsOf(monitor))
        sensors.push_back(sensorJson(sensor, found.locator.nameOf(monitor, sensor.file)));
    for (const board::Pwm& pwm : board::pwmsOf(monitor)) {
        ordered_json& json =
            pwms.emplace_back(ordered_json{{"device", found.locator.nameOf(monitor, pwm.file)}});
        put(json, "value", pwm.value);
        if (pwm.mode) {
            json["enable"] = found.locator.nameOf(monitor, pwm.enable);
            put(json, "mode", *pwm.mode);
        }
        if (!pwm.tach.empty())
            json["tach"] = found.locator.nameOf(monitor, pwm.tach);
    }
    ordered_json json = ordered_json::object();
    put(json, "name", monitor.name);
    json["bus_device"] = monitor.busDevice;
    json["folder"] = monitor.folder;
    json["sensors"] = std::move(sensors);
    json["pwms"] = std::move(pwms);
    return json;
}

void printForPrograms(const Findings& found) {
    ordered_json json = {{"monitors", ordered_json::array()},
                         {"leds", ordered_json::array()},
                         {"eeproms", ordered_json::array()},
                         {"inputs", ordered_json::array()}};
    for (const board::Monitor& monitor : found.monitors)
        json["monitors"].push_back(monitorJson(found, monitor));
    for (const board::LedEntry& led : found.leds) {
        ordered_json& entry =
            json["leds"].emplace_back(ordered_json{{"device", board::nameOfLed(led.name)}});
        put(entry, "brightness", led.brightness);
        put(entry, "maximum", led.maximum);
        put(entry, "trigger", led.trigger);
    }
    for (const board::Eeprom& eeprom : found.eeproms) {
        ordered_json& entry = json["eeproms"].emplace_back(ordered_json{{"device", eeprom.file}});
        put(entry, "size", eeprom.size);
        entry["type"] = eeprom.type;
    }
    for (const board::InputDevice& input : found.inputs) {
        ordered_json& entry = json["inputs"].emplace_back(ordered_json{{"device", input.file}});
        put(entry, "name", input.name);
        put(entry, "codes", input.codes);
    }
    printJson(json);
}

int probe(const Options& options, const ProbeWords& words) {
    if (words.toml && options.json)
        throw WrongCall("--toml and --format json are two formats (expected one of them)");
    std::error_code error;
    if (!std::filesystem::is_directory(words.sysfs, error))
        throw board::Error(words.sysfs + ": is not a folder (expected the root of sysfs)");
    if (words.toml) {
        std::cout << board::starterProfile(board::DeviceLocator(words.sysfs));
        return DONE;
    }
    const Findings found(words.sysfs);
    if (options.json)
        printForPrograms(found);
    else if (found.isNothing())
        std::cout << "no hardware monitors, LEDs, EEPROMs or keys in "
                  << board::printable(words.sysfs) << "\n";
    else
        printForPeople(found);
    return DONE;
}

} // namespace

void addProbe(CLI::App& app, Options& options) {
    const auto [command, words] = addCommand<ProbeWords, probe>(
        app, options, "probe", "List the sensors, fans, LEDs, EEPROMs and keys of this machine");
    addSysfsOption(command, words.sysfs);
    command.add_flag("--toml", words.toml,
                     "Print a board profile to start from; reads EEPROMs, too");
    addExamples(command, {"probe                     show what this machine has",
                          "probe --toml >board.toml  write a profile to start from"});
}

} // namespace boardctl
