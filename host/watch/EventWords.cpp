#include "watch/EventWords.h"

#include <ctime>

#include "String.h"
#include "leds/LedPipe.h"
#include "watch/JsonValues.h"

using nlohmann::ordered_json;

namespace board {

namespace {

double secondsOf(const TYTime& span) {
    constexpr unsigned MS = 1000, NS_A_MS = 1000000;
    const unsigned ms = span.nanoseconds / NS_A_MS; // the rest is cut off
    return (span.seconds * static_cast<double>(MS) + ms) / MS;
}

std::string titleOf(const std::string& kind, const std::string& name) {
    return kind == "descriptor" || kind == "button" ? kind : kind + " '" + name + "'";
}

template <class Measured>
EventWords temperatureWords(const char* type, const char* relation, const Measured& sensor,
                            bool isTrouble) {
    return {type,
            titleOf("thermal", sensor.name) +
                String::format(": %.3f degrees Celsius, %s its maximum of %u", sensor.celsius,
                               relation, sensor.maximum)
                    .c_str(),
            {{"name", sensor.name},
             {"celsius", roundedCelsius(sensor.celsius)},
             {"maximum", sensor.maximum}},
            isTrouble};
}

EventWords words(const event::ButtonPressed&) {
    return {"button-pressed", "button pressed", ordered_json::object()};
}

EventWords words(const event::ButtonReleased& released) {
    std::string text = "button released";
    ordered_json seconds = nullptr;
    if (released.heldFor) {
        const double held = secondsOf(*released.heldFor);
        text += String::format(held < 100 ? ", held %.3g s" : ", held %.0f s", held).c_str();
        seconds = held;
    }
    return {"button-released", text, {{"held_seconds", seconds}}};
}

EventWords words(const event::LedCommand& command) {
    return {"led-command", "LED command: " + command.line, {{"line", command.line}}};
}

EventWords words(const event::LedChanged& led) {
    return {"led",
            "LED '" + led.name + "' " + (led.isLit ? "on" : "off"),
            {{"name", led.name}, {"lit", led.isLit}}};
}

EventWords words(const event::TemperatureOver& over) {
    return temperatureWords("temperature-over", "over", over, true);
}

EventWords words(const event::TemperatureBack& back) {
    return temperatureWords("temperature-back", "below", back, false);
}

EventWords words(const event::DeviceGone& gone) {
    return {"device-gone",
            titleOf(gone.kind, gone.name) + " can't be used: " + gone.reason,
            {{"kind", gone.kind}, {"name", gone.name}, {"error", gone.reason}},
            true};
}

EventWords words(const event::DeviceBack& back) {
    return {"device-back",
            titleOf(back.kind, back.name) + " can be used again",
            {{"kind", back.kind}, {"name", back.name}}};
}

EventWords words(const event::PowerLost& lost) {
    return {"power-lost", titleOf("power", lost.name) + " is lost", {{"name", lost.name}}, true};
}

EventWords words(const event::PowerBack& back) {
    return {"power-back",
            titleOf("power", back.name) + " is back, status " + std::to_string(back.status),
            {{"name", back.name}, {"status", back.status}}};
}

EventWords words(const event::FanAstray& astray) {
    return {"fan-astray",
            titleOf("fan", astray.name) + " was set to " + astray.set + " and holds " + astray.held,
            {{"name", astray.name}, {"set", astray.set}, {"speed", astray.held}},
            true};
}

EventWords words(const event::FanFollows& follows) {
    return {"fan-follows",
            titleOf("fan", follows.name) + " holds " + follows.held +
                (follows.set ? ", as it was set" : "; no speed is set any more"),
            {{"name", follows.name}, {"set", orNull(follows.set)}, {"speed", follows.held}}};
}

EventWords words(const event::FanStopped& stopped) {
    return {"fan-stopped",
            titleOf("fan", stopped.name) + " does not turn at the speed " + stopped.level,
            {{"name", stopped.name}, {"speed", stopped.level}, {"rpm", 0}},
            true};
}

EventWords words(const event::FanTurns& turns) {
    return {"fan-turns",
            titleOf("fan", turns.name) +
                (turns.rpm != 0 ? " turns, " + std::to_string(turns.rpm) + " rpm" : " is off"),
            {{"name", turns.name}, {"speed", turns.level}, {"rpm", turns.rpm}}};
}

EventWords words(const event::DescriptorChanged& changed) {
    const std::string tags = std::to_string(changed.tags) + (changed.tags == 1 ? " tag" : " tags");
    EventWords result{"descriptor-changed",
                      "descriptor: " + tags + " changed on its device",
                      {{"tags", changed.tags}}};
    if (changed.fault) {
        result.text += "; " + *changed.fault;
        result.fields["error"] = *changed.fault;
        result.isTrouble = true;
    }
    return result;
}

EventWords words(const event::LedCommandUnknown& command) {
    return {"led-command-unknown",
            "LED command that matches no row: " + command.line,
            {{"line", command.line}}};
}

EventWords words(const event::LedPipeGone& pipe) {
    return {
        "led-pipe-gone", "no LED commands arrive: " + pipe.reason, {{"error", pipe.reason}}, true};
}

EventWords words(const event::LedPipeBack& pipe) {
    return {"led-pipe-back",
            "LED commands are read from " + std::string(LED_PIPE) +
                (pipe.isTakenOver ? " now" : " again") + ", which " + pipe.writers + " may write" +
                (pipe.isTakenOver ? ": the service that read them has ended" : ""),
            {{"pipe", LED_PIPE}, {"writers", pipe.writers}}};
}

EventWords words(const event::LedFileGone& led) {
    return {"led-gone",
            "LED '" + led.name + "' is gone: " + led.reason,
            {{"name", led.name}, {"error", led.reason}},
            true};
}

EventWords words(const event::LedFileBack& led) {
    return {"led-back", "LED '" + led.name + "' is back", {{"name", led.name}}};
}

EventWords words(const event::LedsTakenOver&) {
    return {"leds-taken-over",
            "this host drives the LEDs now: the program that drove them has ended",
            ordered_json::object()};
}

EventWords words(const event::FaultReport& fault) {
    return {"fault", fault.text, {{"error", fault.text}}, true};
}

EventWords words(const event::LogLine& line) {
    return {"log", line.text, {{"line", line.text}}};
}

} // namespace

EventWords wordsOf(const Event& event) {
    return std::visit([](const auto& what) { return words(what); }, event);
}

std::string timeText(const TYTime& time) {
    const auto seconds = static_cast<std::time_t>(time.seconds);
    std::tm parts{};
    ::localtime_r(&seconds, &parts);
    char date[32], zone[8];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &parts);
    std::strftime(zone, sizeof zone, "%z", &parts);
    return String::format("%s.%03u%s", date, static_cast<unsigned>(time.nanoseconds / 1000000),
                          zone)
        .c_str();
}

} // namespace board
