#include "board/Metrics.h"

#include <sstream>

namespace board {

namespace {

/// A label's value, escaped as the format requires.
std::string quoted(const std::string& text) {
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
    return "{name=" + quoted(name) + "}";
}

/// Writes one family after another. A family without samples gets no header.
class Families {
public:
    explicit Families(bool isSimulated) : m_isSimulated(isSimulated) {
        m_text.precision(7); // the digits of a single-precision number
    }

    void begin(const char* name, const char* help) {
        m_name = name;
        m_head = std::string("# HELP ") + name + " " + help + "\n# TYPE " + name + " gauge\n";
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

} // namespace

std::string toMetrics(const Report& report, bool isSimulated) {
    Families families(isSimulated);
    families.begin("board_temperature_celsius", "Temperature that a sensor of the board reads.");
    for (const TemperatureReading& temperature : report.temperatures)
        if (temperature.value)
            families.add(nameLabel(temperature.name), *temperature.value);

    families.begin("board_fan_speed_level", "1 for the speed that a fan is in, 0 for the others.");
    for (const FanReading& fan : report.fans)
        for (const auto speed : {IFanControl::FAN_SPEED_FULL, IFanControl::FAN_SPEED_HIGH,
                                 IFanControl::FAN_SPEED_LOW, IFanControl::FAN_SPEED_OFF})
            if (fan.value)
                families.add("{name=" + quoted(fan.name) + ",speed=" + quoted(speedName(speed)) +
                                 "}",
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
    return families.text();
}

} // namespace board
