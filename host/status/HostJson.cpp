#include "status/HostJson.h"

#include <cmath>

#include "status/StatusAnswers.h"

using nlohmann::ordered_json;

namespace board {

namespace {

/// A device as people and programs are told its name: one that a board has once is called by its
/// kind.
std::string nameOf(const Device& device) {
    const bool isOnlyOne =
        device.kind == DeviceKind::DESCRIPTOR || device.kind == DeviceKind::PREFERENCES;
    return isOnlyOne ? kindName(device.kind) : device.name;
}

struct Measured {
    ordered_json value = nullptr;
    ordered_json unit = nullptr;
    ordered_json text = nullptr;
};

struct Measure {
    Measured operator()(std::monostate) const { return {}; }
    Measured operator()(const FanReading& fan) const {
        if (!fan.value)
            return {};
        const std::string speed = speedName(*fan.value);
        if (!fan.rpm || !*fan.rpm)
            return {nullptr, nullptr, speed};
        return {**fan.rpm, "rpm", speed + ", " + std::to_string(**fan.rpm) + " rpm"};
    }
    Measured operator()(const TemperatureReading& sensor) const {
        if (!sensor.value)
            return {};
        constexpr double THOUSANDTHS = 1000;
        const double celsius = static_cast<double>(*sensor.value);
        return {
            std::round(celsius * THOUSANDTHS) / THOUSANDTHS, "celsius",
            String::format("%.3f degrees Celsius, maximum %u", celsius, sensor.maximum).c_str()};
    }
    Measured operator()(const PowerReading& power) const {
        if (!power.value)
            return {};
        return {*power.value, "status", "status " + std::to_string(*power.value)};
    }
    Measured operator()(const LedReading& led) const {
        if (!led.value)
            return {};
        return {*led.value, "state", "state " + std::to_string(*led.value)};
    }
};

const char* actionName(LedCtrl::ActionKind action) {
    switch (action) {
    case LedCtrl::ACTION_ON:
        return "on";
    case LedCtrl::ACTION_OFF:
        return "off";
    case LedCtrl::ACTION_BLINK:
        return "blink";
    case LedCtrl::ACTION_FLASH:
        return "flash";
    case LedCtrl::ACTION_ROLL_UP:
        return "roll-up";
    case LedCtrl::ACTION_ROLL_DOWN:
        return "roll-down";
    case LedCtrl::ACTION_ROLL_STOP:
        return "roll-stop";
    case LedCtrl::ACTION_DEFAULTS:
        return "defaults";
    }
    return "unknown";
}

ordered_json toJson(const LedCause& cause, const LedSequencerProfile& profile) {
    const LedSequencerProfile::Command& row = profile.commands[cause.run.row];
    ordered_json milliseconds = nullptr;
    if (cause.ticksLeft)
        milliseconds = std::uint64_t{*cause.ticksLeft} * profile.tickMs;
    return {{"row", cause.run.row},
            {"word1", row.word1},
            {"word2", row.word2},
            {"number", row.number},
            {"action", actionName(row.action)},
            {"line", cause.run.isDefault() ? ordered_json(nullptr) : ordered_json(cause.run.line)},
            {"since", utcText(cause.run.since)},
            {"ticks_left", orNull(cause.ticksLeft)},
            {"ms_left", milliseconds}};
}

} // namespace

ordered_json toJson(const Device& device, const WatchedDevice* watched, const TYTime& started) {
    const std::optional<std::string>& fault = watched ? watched->fault : device.fault;
    const Measured measured =
        watched && !fault ? std::visit(Measure(), watched->reading) : Measured();
    return {{"kind", kindName(device.kind)},
            {"name", nameOf(device)},
            {"description", device.description},
            {"path", device.path},
            {"state", fault ? "down" : "up"},
            {"value", measured.value},
            {"unit", measured.unit},
            {"text", measured.text},
            {"fault", orNull(fault)},
            {"since", utcText(watched ? watched->since : started)}};
}

ordered_json toJson(const Alarm& alarm, const Device* device) {
    return {{"kind", kindName(alarm.kind)},
            {"device", device ? nameOf(*device) : alarm.device},
            {"text", alarm.text},
            {"since", utcText(alarm.since)}};
}

const char* kindName(Alarm::Kind kind) {
    switch (kind) {
    case Alarm::Kind::DEVICE_GONE:
        return "device-gone";
    case Alarm::Kind::TEMPERATURE_OVER:
        return "temperature-over";
    case Alarm::Kind::POWER_LOST:
        return "power-lost";
    case Alarm::Kind::FAN_ASTRAY:
        return "fan-astray";
    case Alarm::Kind::FAN_STOPPED:
        return "fan-stopped";
    }
    return "";
}

ordered_json toJson(const LedExplanation& led, const LedSequencerProfile& profile) {
    ordered_json covers = ordered_json::array();
    for (const LedCause& cause : led.covers)
        covers.push_back(toJson(cause, profile));
    return {{"name", led.name},
            {"mask", led.mask},
            {"lit", led.isLit},
            {"drive", led.driver ? toJson(*led.driver, profile) : ordered_json(nullptr)},
            {"covers", covers}};
}

ordered_json toJson(const Result<CpuReading>& load) {
    if (!load)
        return {{"last", nullptr}, {"mid", nullptr}, {"longest", nullptr}, {"fault", load.fault()}};
    return {{"last", load->last},
            {"mid", orNull(load->mid)},
            {"longest", orNull(load->longest)},
            {"fault", nullptr}};
}

} // namespace board
