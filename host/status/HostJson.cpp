#include "status/HostJson.h"

#include "BD_TagMeaning.h"
#include "base/Text.h"
#include "client/UtcText.h"
#include "descriptor/TagWords.h"
#include "descriptor/compare/ExpectedTag.h"
#include "profile/LedActions.h"
#include "watch/JsonValues.h"

using nlohmann::ordered_json;

namespace board {

namespace {

/// What a device held at the last look: the members "value" and "unit", "level" and "maximum".
struct Measure {
    ordered_json operator()(std::monostate) const { return members(nullptr, nullptr); }
    ordered_json operator()(const FanReading& fan) const {
        const bool hasSpeed = fan.rpm && *fan.rpm;
        ordered_json json = hasSpeed ? members(**fan.rpm, "rpm") : members(nullptr, nullptr);
        if (fan.value)
            json["level"] = speedName(*fan.value);
        return json;
    }
    ordered_json operator()(const TemperatureReading& sensor) const {
        ordered_json json = members(nullptr, nullptr);
        if (sensor.value)
            json = members(roundedCelsius(*sensor.value), "celsius");
        json["maximum"] = sensor.maximum;
        return json;
    }
    ordered_json operator()(const PowerReading& power) const {
        return power.value ? members(*power.value, "status") : members(nullptr, nullptr);
    }
    ordered_json operator()(const LedReading& led) const {
        return led.value ? members(*led.value, "state") : members(nullptr, nullptr);
    }

private:
    static ordered_json members(const ordered_json& value, const ordered_json& unit) {
        return {{"value", value}, {"unit", unit}, {"level", nullptr}, {"maximum", nullptr}};
    }
};

const char* originName(LedRun::Origin origin) {
    switch (origin) {
    case LedRun::Origin::START:
        return "start";
    case LedRun::Origin::LINE:
        return "line";
    case LedRun::Origin::DEFAULTS:
        return "defaults";
    case LedRun::Origin::REMEMBERED:
        return "remembered";
    }
    return "start";
}

ordered_json toJson(const LedCause& cause, const LedSequencerProfile& profile) {
    const LedSequencerProfile::Command& row = profile.commands[cause.run.row];
    const char* const action = actionName(row.action);
    ordered_json milliseconds = nullptr;
    if (cause.ticksLeft)
        milliseconds = std::uint64_t{*cause.ticksLeft} * profile.tickMs;
    return {{"row", cause.run.row},
            {"place", cause.place},
            {"word1", row.word1},
            {"word2", row.word2},
            {"number", row.number},
            {"action", action ? action : "unknown"},
            {"origin", originName(cause.run.origin)},
            {"line", cause.run.line.empty() ? ordered_json(nullptr) : ordered_json(cause.run.line)},
            {"since", utcText(cause.run.since)},
            {"ticks_left", orNull(cause.ticksLeft)},
            {"ms_left", milliseconds},
            {"shown", cause.isShown}};
}

/// The data in the form that the identifier suggests; hexadecimal digits if the data does not fit
/// that form. Null if reports omit the tag.
ordered_json dataText(const BD::Tag& tag) {
    const BD::TagMeaning meaning = BD::meaningOf(tag.id);
    if (meaning.kind == BD::TagKind::HIDDEN)
        return nullptr;
    const bool isWhole = meaning.size == 0 || meaning.size == tag.length;
    const std::string digits = valueWords(tag, true);
    if (tag.length == 0 || !isWhole)
        return digits;
    switch (meaning.kind) {
    case BD::TagKind::IPV4: {
        std::vector<std::string> parts;
        for (unsigned i = 0; i < meaning.size; ++i)
            parts.push_back(std::to_string(static_cast<unsigned char>(tag.data[i])));
        return join(parts, ".");
    }
    case BD::TagKind::TEXT:
    case BD::TagKind::UPPER_TEXT: {
        const std::string text = textOf(tag);
        return printable(text) == text ? text : digits;
    }
    case BD::TagKind::HEX_NUMBER:
        return "0x" + digits;
    default:
        return valueWords(tag);
    }
}

} // namespace

ordered_json toJson(const Device& device, const WatchedDevice* watched, const TYTime& started) {
    const std::optional<std::string>& fault = watched ? watched->fault : device.fault;
    ordered_json json = {{"kind", kindName(device.kind)},
                         {"name", device.name},
                         {"description", device.description},
                         {"path", device.path},
                         {"state", fault ? "down" : "up"}};
    json.update(watched ? std::visit(Measure(), watched->reading) : Measure()(std::monostate()));
    if (fault)
        json["value"] = json["unit"] = json["level"] = nullptr;
    json["fault"] = orNull(fault);
    json["since"] = utcText(watched ? watched->since : started);
    return json;
}

ordered_json toJson(const Alarm& alarm) {
    return {{"kind", alarm.type},
            {"device", alarm.device},
            {"text", alarm.text},
            {"since", utcText(alarm.since)}};
}

ordered_json toJson(const LedExplanation& led, const LedSequencerProfile& profile) {
    ordered_json covers = ordered_json::array();
    for (const LedCause& cause : led.covers)
        covers.push_back(toJson(cause, profile));
    const char* const color = colorName(led.color);
    return {{"name", led.name},
            {"mask", led.mask},
            {"color", color ? ordered_json(color) : ordered_json(nullptr)},
            {"lit", led.isLit},
            {"drive", led.driver ? toJson(*led.driver, profile) : ordered_json(nullptr)},
            {"covers", covers}};
}

ordered_json toJson(const ImageTag& tag) {
    return {{"id", tag.tag.id},
            {"name", tagName(tag.tag.id)},
            {"offset", tag.offset},
            {"length", tag.tag.length},
            {"text", dataText(tag.tag)}};
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
