#pragma once

#include <string>

#include "base/Error.h"
#include "status/StatusAnswers.h"

namespace support {

/// The answers of a host that has an example of each kind of device, alarm, fault and event.
class CannedAnswers : public board::StatusAnswers {
public:
    explicit CannedAnswers(std::string profile) : m_profile(std::move(profile)) {}

    nlohmann::ordered_json status() const override {
        auto status = nlohmann::ordered_json::parse(R"({"product":null,"profile":"",
"simulated":true,"version":"1.0.0","firmware":{"version":"7.1"},"started":"2026-05-31T08:00:00.000Z","devices":[
{"kind":"thermal","name":"thermal","description":"Board\u001b sensor","path":"dev/temperature",
 "state":"up","value":99.5,"unit":"celsius","level":null,"maximum":85,"fault":null,
 "since":"2026-05-31T08:00:00.000Z"},
{"kind":"fan","name":"fan","description":"","path":"dev/fan","state":"down","value":null,
 "unit":null,"level":null,"maximum":null,"fault":"can't open: No such file or directory",
 "since":"2026-05-31T09:00:00.000Z"},
{"kind":"led","name":"status","description":"","path":"dev/status","state":"up","value":1,
 "unit":"state","level":null,"maximum":null,"fault":null,"since":"2026-05-31T08:00:00.000Z"}],
"alarms":[{"kind":"temperature-over","device":"thermal","text":"thermal is over its maximum of 85",
 "since":"2026-05-31T10:00:00.000Z"}],
"leds":{"running":true,"pipe":"/tmp/evt.fifo","tick_ms":100,"faults":["no file"]},
"button":{"watched":true,"pressed":false,"fault":null},
"cpu":{"last":3,"mid":2,"longest":null,"fault":null},
"counters":{"led_lines_handled":4,"led_lines_unknown":1,"button_presses":2,"events_dropped":0},
"events":[{"event":"led-command","time":"2026-05-31T09:30:00.000Z",
 "text":"LED command: line call","line":"line call"}]})");
        status["profile"] = m_profile;
        return status;
    }

    nlohmann::ordered_json leds() const override {
        return nlohmann::ordered_json::parse(
            R"([{"name":"power","mask":1,"color":"green","lit":true,"drive":
{"row":7,"place":"board.toml:90: leds.command[7]","word1":"line","word2":"call","number":0,
 "action":"on","origin":"line","line":"line call","since":"2026-05-31T09:30:00.000Z",
 "ticks_left":12,"ms_left":1200,"shown":true},"covers":[
{"row":0,"place":"board.toml:50: leds.command[0]","word1":"system","word2":"boot","number":0,
 "action":"blink","origin":"start","line":null,"since":"2026-05-31T08:00:00.000Z",
 "ticks_left":null,"ms_left":null,"shown":false},
{"row":2,"place":"board.toml:60: leds.command[2]","word1":"a","word2":"b","number":-1,
 "action":"on","origin":"remembered","line":"a b -1","since":"2026-05-30T08:00:00.000Z",
 "ticks_left":null,"ms_left":null,"shown":false}]},
{"name":"line","mask":2,"color":null,"lit":false,"drive":null,"covers":[]}])");
    }

    std::uint32_t lit() const override { return 1; }

    nlohmann::ordered_json descriptor() const override {
        return nlohmann::ordered_json::parse(R"({"tags":[
{"id":3,"name":"Tag3","offset":8,"length":2,"text":null}],"fault":"is cut"})");
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
