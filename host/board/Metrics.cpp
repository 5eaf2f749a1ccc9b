#include "board/Metrics.h"

#include <sstream>

namespace board {

namespace {

/// A label's value with the escapes of the format.
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

std::string nameLabel(const Reading& reading) {
    return "{name=" + quoted(reading.name) + "}";
}

/// Writes one family after the other; the head of a family without samples is left out too.
class Families {
public:
    Families() { m_text.precision(7); } // what single precision holds

    void begin(const char* name, const char* help) {
        m_name = name;
        m_head = std::string("# HELP ") + name + " " + help + "\n# TYPE " + name + " gauge\n";
    }

    template <class Value>
    void add(const std::string& labels, Value value) {
        m_text << m_head << m_name << labels << " " << value << "\n";
        m_head.clear();
    }

    std::string text() const { return m_text.str(); }

private:
    std::string m_name;
    std::string m_head;
    std::ostringstream m_text;
};

} // namespace

std::string toMetrics(const Report& report) {
    Families families;
    families.begin("board_temperature_celsius", "Temperature that a sensor of the board reads.");
    for (const TemperatureReading& temperature : report.temperatures)
        if (temperature.fault.empty())
            families.add(nameLabel(temperature), temperature.celsius);

    families.begin("board_fan_speed_level", "1 for the speed that a fan is in, 0 for the others.");
    for (const FanReading& fan : report.fans)
        for (const auto speed : {IFanControl::FAN_SPEED_FULL, IFanControl::FAN_SPEED_HIGH,
                                 IFanControl::FAN_SPEED_LOW, IFanControl::FAN_SPEED_OFF})
            if (fan.fault.empty())
                families.add("{name=" + quoted(fan.name) + ",speed=" + quoted(speedName(speed)) +
                                 "}",
                             fan.speed == speed ? 1 : 0);

    families.begin("board_power_status", "Status word of a power supply.");
    for (const PowerReading& power : report.powers)
        if (power.fault.empty())
            families.add(nameLabel(power), power.status);

    families.begin("board_led_state", "State of a LED: 0 off, 1 and 2 lit.");
    for (const LedReading& led : report.leds)
        if (led.fault.empty())
            families.add(nameLabel(led), led.state);

    if (report.capacity) {
        families.begin("board_dsp_channels", "DSP channels of the board.");
        if (report.capacity->dspChannels)
            families.add("", *report.capacity->dspChannels);
        families.begin("board_sip_legs", "SIP legs that the board may hold at once.");
        families.add("", report.capacity->sipLegs);
    }
    if (report.cpu && report.cpu->last) {
        families.begin("board_cpu_load_ratio", "Busy share of the processors' time, 0 to 1.");
        families.add("{span=\"last\"}", *report.cpu->last / 100.0);
    }
    return families.text();
}

} // namespace board
