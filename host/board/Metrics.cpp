#include "board/Metrics.h"

#include <algorithm>
#include <sstream>
#include <unordered_map>

#include "board/Host.h"

namespace board {

namespace {

/// A label's value, escaped as the format requires.
std::string labelText(const std::string& text) {
    std::string escaped = "\"";
    for (const char c : text) {
        if (c == '\n')
            escaped += "\\n";
        else if (c == '"' || c == '\\')
            escaped += std::string("\\") + c;
        else
            escaped += c;
    }
    return escaped + "\"";
}

std::string nameLabel(const std::string& name) {
    return "{name=" + labelText(name) + "}";
}

/// Writes one family after another. A family without samples gets no header.
class Families {
public:
    explicit Families(bool isSimulated) : m_isSimulated(isSimulated) {
        m_text.precision(7); // the digits of a single-precision number
    }

    void begin(const char* name, const char* help, const char* type = "gauge") {
        m_name = name;
        m_head =
            std::string("# HELP ") + name + " " + help + "\n# TYPE " + name + " " + type + "\n";
    }

    template <class Value>
    void add(const std::string& labels, Value value) {
        m_text << m_head << m_name << allLabels(labels) << " " << value << "\n";
        m_head.clear();
    }

    std::string text() const { return m_text.str(); }

private:
    std::string allLabels(const std::string& labels) const {
        if (!m_isSimulated)
            return labels;
        const std::string others = labels.empty() ? "{" : labels.substr(0, labels.size() - 1) + ",";
        return others + "simulated=\"true\"}";
    }

    const bool m_isSimulated;
    std::string m_name;
    std::string m_head;
    std::ostringstream m_text;
};

void addDevices(Families& families, const Host& host, const Report& report) {
    families.begin("board_device_up", "1 if a device of the board can be used, 0 if not.");
    std::unordered_map<std::string, const DriverReport*> drivers;
    for (const DriverReport& driver : report.drivers)
        drivers.emplace(driver.name, &driver);
    for (const Device& device : host.devices()) {
        const auto driver = drivers.find(device.name);
        const bool isUp = driver == drivers.end() ? !device.fault : !driver->second->fault;
        families.add("{kind=" + labelText(kindName(device.kind)) +
                         ",device=" + labelText(device.name) + "}",
                     isUp ? 1 : 0);
    }
    if (report.firmware)
        families.add("{kind=\"firmware\",device=\"firmware\"}", *report.firmware ? 1 : 0);
}

void addIdentity(Families& families, const Report& report) {
    std::string labels;
    if (report.identity.platform)
        labels += "platform=" + labelText(identifierText(*report.identity.platform)) + ",";
    if (report.identity.product)
        labels += "product=" + labelText(identifierText(*report.identity.product)) + ",";
    if (report.firmware && *report.firmware)
        labels += "firmware=" + labelText((*report.firmware)->version) + ",";
    if (labels.empty())
        return;
    labels.pop_back();
    families.begin("board_info",
                   "Always 1; the labels hold the board's identifiers and firmware version.");
    families.add("{" + labels + "}", 1);
}

void addFigures(Families& families, const HostFigures& figures) {
    families.begin("board_alarm", "1 for each alarm that is in force.");
    for (const HostFigures::Alarm& alarm : figures.alarms)
        families.add("{kind=" + labelText(alarm.kind) + ",device=" + labelText(alarm.device) + "}",
                     1);
    families.begin("board_host_start_time_seconds",
                   "When the board's host started, in seconds since 1970.");
    families.add(
        "", std::chrono::duration_cast<std::chrono::seconds>(figures.started.time_since_epoch())
                .count());
    const auto count = [&](const char* name, const char* help, std::uint64_t value) {
        families.begin(name, help, "counter");
        families.add("", value);
    };
    count("board_led_lines_total", "Lines from the LED pipe that a row of the table matched.",
          figures.ledLines);
    count("board_led_lines_unknown_total", "Lines from the LED pipe that no row matched.",
          figures.unknownLedLines);
    count("board_button_presses_total", "Presses of the service button.", figures.buttonPresses);
    count("board_events_dropped_total", "Events for which the host had no room.",
          figures.lostEvents);
}

} // namespace

std::string toMetrics(const Host& host, const Report& report, bool isSimulated,
                      const HostFigures* figures) {
    Families families(isSimulated);
    addIdentity(families, report);
    addDevices(families, host, report);
    families.begin("board_temperature_celsius", "Temperature that a sensor of the board reads.");
    for (const TemperatureReading& temperature : report.temperatures)
        if (temperature.value)
            families.add(nameLabel(temperature.name), *temperature.value);

    families.begin("board_temperature_max_celsius",
                   "Highest temperature that the board's profile allows.");
    for (const TemperatureReading& temperature : report.temperatures)
        families.add(nameLabel(temperature.name), temperature.maximum);

    families.begin("board_fan_speed_level", "1 for the speed that a fan is in, 0 for the others.");
    for (const FanReading& fan : report.fans)
        for (const auto speed : {IFanControl::FAN_SPEED_FULL, IFanControl::FAN_SPEED_HIGH,
                                 IFanControl::FAN_SPEED_LOW, IFanControl::FAN_SPEED_OFF})
            if (fan.value)
                families.add("{name=" + labelText(fan.name) +
                                 ",speed=" + labelText(speedName(speed)) + "}",
                             *fan.value == speed ? 1 : 0);

    families.begin("board_fan_rpm", "Speed of a fan in revolutions per minute.");
    for (const FanReading& fan : report.fans)
        if (fan.rpm && *fan.rpm)
            families.add(nameLabel(fan.name), **fan.rpm);

    families.begin("board_power_status", "Status word of a power supply.");
    for (const PowerReading& power : report.powers)
        if (power.value)
            families.add(nameLabel(power.name), *power.value);

    families.begin("board_led_state",
                   "State of an LED: 0 off, 1 lit, 2 lit in the second way; any other number, such "
                   "as 255, is the brightness of a dimmable LED.");
    for (const LedReading& led : report.leds)
        if (led.value)
            families.add(nameLabel(led.name), *led.value);

    if (report.capacity) {
        families.begin("board_dsp_channels", "DSP channels of the board.");
        if (report.capacity->dspChannels)
            families.add("", *report.capacity->dspChannels);
        families.begin("board_sip_legs", "SIP legs that the board may hold at once.");
        families.add("", report.capacity->sipLegs);
    }
    if (report.cpuSinceBoot && *report.cpuSinceBoot) {
        families.begin("board_cpu_load_ratio", "Busy share of the processors' time, 0 to 1.");
        families.add("{span=\"boot\"}", **report.cpuSinceBoot / 100.0);
    }
    if (figures)
        addFigures(families, *figures);
    return families.text();
}

} // namespace board
