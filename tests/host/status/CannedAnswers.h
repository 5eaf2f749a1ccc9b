#pragma once

#include <string>

#include "base/Error.h"
#include "status/StatusAnswers.h"

namespace support {

/// The answers of a host that knows a bit of everything.
class CannedAnswers : public board::StatusAnswers {
public:
    explicit CannedAnswers(std::string profile) : m_profile(std::move(profile)) {}

    nlohmann::ordered_json status() const override {
        return {{"product", nullptr},
                {"profile", m_profile},
                {"simulated", true},
                {"version", "1.0.0"},
                {"started", "2026-05-31T08:00:00.000Z"},
                {"devices",
                 {{{"kind", "thermal"},
                   {"name", "thermal"},
                   {"description", "Board\x1b sensor"},
                   {"path", "dev/temperature"},
                   {"state", "up"},
                   {"value", 99.5},
                   {"unit", "celsius"},
                   {"text", "41.500 degrees Celsius"},
                   {"fault", nullptr},
                   {"since", "2026-05-31T08:00:00.000Z"}},
                  {{"kind", "fan"},
                   {"name", "fan"},
                   {"description", ""},
                   {"path", "dev/fan"},
                   {"state", "down"},
                   {"value", nullptr},
                   {"unit", nullptr},
                   {"text", nullptr},
                   {"fault", "can't open: No such file or directory"},
                   {"since", "2026-05-31T09:00:00.000Z"}}}},
                {"alarms",
                 {{{"kind", "over-maximum"},
                   {"device", "thermal"},
                   {"text", "thermal is above its maximum of 85"},
                   {"since", "2026-05-31T10:00:00.000Z"}}}},
                {"leds", {{"running", true}, {"pipe", "/tmp/evt.fifo"}, {"fault", nullptr}}},
                {"button", {{"watched", true}, {"pressed", false}, {"fault", nullptr}}},
                {"cpu", {{"last", 3}, {"mid", 2}, {"longest", nullptr}, {"fault", nullptr}}},
                {"counters",
                 {{"led_lines_handled", 4},
                  {"led_lines_unknown", 1},
                  {"button_presses", 2},
                  {"events_dropped", 0}}},
                {"events",
                 {{{"event", "led-command"},
                   {"time", "2026-05-31T09:30:00.000Z"},
                   {"text", "LED command: line call"},
                   {"line", "line call"}}}}};
    }

    nlohmann::ordered_json leds() const override {
        const nlohmann::ordered_json boot = {{"row", 0},
                                             {"word1", "system"},
                                             {"word2", "boot"},
                                             {"number", 0},
                                             {"action", "blink"},
                                             {"line", nullptr},
                                             {"since", "2026-05-31T08:00:00.000Z"},
                                             {"ticks_left", nullptr},
                                             {"ms_left", nullptr}};
        nlohmann::ordered_json call = boot;
        call.update({{"row", 7},
                     {"word1", "line"},
                     {"word2", "call"},
                     {"action", "on"},
                     {"line", "line call"},
                     {"ticks_left", 12},
                     {"ms_left", 1200}});
        return {{{"name", "power"},
                 {"mask", 1},
                 {"lit", true},
                 {"drive", call},
                 {"covers", nlohmann::ordered_json::array({boot})}},
                {{"name", "line"},
                 {"mask", 2},
                 {"lit", nullptr},
                 {"drive", nullptr},
                 {"covers", nlohmann::ordered_json::array()}}};
    }

    std::string metrics() const override {
        if (fails)
            throw board::Error("out of figures");
        return figures;
    }

    std::string figures = "board_info 1\n";
    bool fails = false;

private:
    const std::string m_profile;
};

} // namespace support
