#include "leds/preview/LedJson.h"

#include <utility>

#include "leds/LedRow.h"

namespace board {

namespace {

using nlohmann::ordered_json;

ordered_json driveJson(const LedDrive& drive, const LedWaves& waves) {
    return {{"row", drive.row},
            {"words", lineOf(waves.rows[drive.row])},
            {"light", lightWord(drive.light)},
            {"timed", drive.isTimed}};
}

ordered_json segmentJson(const LedSegment& segment, const LedWaves& waves) {
    ordered_json json = {{"from", segment.begin}, {"to", segment.end}};
    json.update(driveJson(segment.drive, waves));
    json["covered"] = ordered_json::array();
    for (const LedCover& cover : segment.covers) {
        ordered_json covered = {{"from", cover.begin}, {"to", cover.end}};
        covered.update(driveJson(cover.drive, waves));
        json["covered"].push_back(std::move(covered));
    }
    return json;
}

/// Moves the wave out of `led`, because it may be long.
ordered_json ledJson(LedWave& led, const LedWaves& waves) {
    const char* const color = colorName(led.color);
    ordered_json json = {{"mask", led.mask},
                         {"name", led.name},
                         {"color", color ? ordered_json(color) : ordered_json()},
                         {"wave", std::move(led.wave)},
                         {"segments", ordered_json::array()}};
    for (const LedSegment& segment : led.segments)
        json["segments"].push_back(segmentJson(segment, waves));
    return json;
}

} // namespace

const char* lightWord(LedLight light) {
    switch (light) {
    case LedLight::STEADY:
        return "steady";
    case LedLight::BLINK:
        return "blink";
    case LedLight::FLASH:
        return "flash";
    case LedLight::ROLL:
        return "roll";
    case LedLight::NONE:
        break;
    }
    return "none";
}

ordered_json toJson(LedWaves waves) {
    ordered_json leds = ordered_json::array(), events = ordered_json::array();
    for (LedWave& led : waves.leds)
        leds.push_back(ledJson(led, waves));
    for (const LedLine& line : waves.lines)
        if (line.tick < waves.ticks)
            events.push_back({{"tick", line.tick},
                              {"ms", std::uint64_t{line.tick} * waves.tickMs},
                              {"line", line.line},
                              {"row", line.row ? ordered_json(*line.row) : ordered_json()}});
    return {{"ticks", waves.ticks},
            {"tick_ms", waves.tickMs},
            {"leds", std::move(leds)},
            {"events", std::move(events)}};
}

} // namespace board
