#include "board/StarterProfile.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>
#include <sstream>
#include <utility>
#include <vector>

#include "base/Text.h"
#include "board/BoardCheck.h"
#include "sysfs/Eeproms.h"
#include "sysfs/InputDevices.h"
#include "sysfs/LedClass.h"
#include "sysfs/Monitors.h"

namespace board {

namespace {

constexpr char HEADING[] =
    "# The devices of this machine, as a board profile to start from. Choose the names by which\n"
    "# programs find the devices, and add a `description` for people. What can't be used as it is\n"
    "# found is a comment with the reason.\n";

constexpr long long DEGREE = 1000, HOTTEST = 1000; // steps in a degree; highest limit in degrees
constexpr long long BRIGHTEST = 9999;              // what an LED's driver can write
constexpr long long LARGEST_DESCRIPTOR = 65536;

std::string tomlText(const std::string& text) {
    std::string result = "\"";
    for (const char c : printable(text)) {
        if (c == '"' || c == '\\')
            result += '\\';
        result += c;
    }
    return result + "\"";
}

std::string line(const std::string& key, const std::string& value,
                 const std::string& comment = "") {
    return key + " = " + value + (comment.empty() ? "" : " # " + printable(comment)) + "\n";
}

std::string commented(const std::string& lines) {
    std::istringstream stream(lines);
    std::string result;
    for (std::string each; std::getline(stream, each);)
        result += "#" + each + "\n";
    return result;
}

/// A limit of the sensor that can be its maximum: name and degrees.
std::optional<std::pair<std::string, long long>> maximumOf(const Sensor& sensor) {
    for (const char* const wanted : {"max", "crit"})
        for (const auto& [name, limit] : sensor.limits)
            if (name == wanted && limit && *limit >= DEGREE && *limit <= HOTTEST * DEGREE)
                return {{sensor.channel + "_" + name, *limit / DEGREE}};
    return std::nullopt;
}

class Writer {
public:
    explicit Writer(const DeviceLocator& locator) : m_locator(locator.readingOnce()) {}

    std::string write() {
        const std::vector<Monitor> monitors = monitorsOf(m_locator.sysfs());
        for (const Monitor& monitor : monitors)
            for (const Pwm& pwm : pwmsOf(monitor))
                addFan(monitor, pwm);
        for (const Monitor& monitor : monitors)
            for (const Sensor& sensor : sensorsOf(monitor))
                if (sensor.quantity->kind == std::string("temp"))
                    addThermal(monitor, sensor);
        for (const LedEntry& led : ledsOf(m_locator.sysfs()))
            addLed(led);
        for (const Eeprom& eeprom : eepromsOf(m_locator.sysfs()))
            addDescriptor(eeprom);
        addButton();
        return HEADING + (m_text.empty() ? "\n# There are none.\n" : m_text);
    }

private:
    void addFan(const Monitor& monitor, const Pwm& pwm) {
        FanProfile fan;
        fan.device.path = m_locator.nameOf(monitor, pwm.file);
        fan.maximum = 255; // the kernel's maximum for every PWM
        std::string lines = begin("fan", fan.device) + line("maximum", "255");
        if (pwm.mode) {
            fan.enable = {m_locator.nameOf(monitor, pwm.enable), ""};
            lines += line("enable", tomlText(fan.enable->path));
            constexpr long long USUAL = 2; // larger numbers are further automatic modes
            if (*pwm.mode && **pwm.mode > USUAL)
                lines += line("automatic", std::to_string(**pwm.mode));
        }
        if (!pwm.tach.empty()) {
            fan.tach = {m_locator.nameOf(monitor, pwm.tach), ""};
            lines += line("tach", tomlText(fan.tach->path));
        }
        addChecked(lines, fan);
    }

    void addThermal(const Monitor& monitor, const Sensor& sensor) {
        ThermalProfile thermal;
        thermal.device.path = m_locator.nameOf(monitor, sensor.file);
        const std::string label = sensor.label ? *sensor.label : "";
        const std::string lines = begin("thermal", thermal.device, label);
        if (const auto maximum = maximumOf(sensor))
            addChecked(lines + line("maximum", std::to_string(maximum->second), maximum->first),
                       thermal);
        else
            leaveOut(lines + line("maximum", "?", "in degrees"),
                     "no " + sensor.channel + "_max or " + sensor.channel +
                         "_crit from 1 to 1000 degrees says how hot it may get");
    }

    void addLed(const LedEntry& entry) {
        LedDeviceProfile led;
        led.device.path = nameOfLed(entry.name);
        std::string lines = begin("led", led.device, "", entry.name);
        if (!entry.maximum)
            return leaveOut(lines, entry.maximum.fault());
        if (*entry.maximum < 1)
            return leaveOut(lines, "its max_brightness is " + std::to_string(*entry.maximum));
        led.on = static_cast<std::uint32_t>(std::min(*entry.maximum, BRIGHTEST));
        addChecked(lines + (led.on == 1 ? "" : line("on", std::to_string(led.on))), led);
    }

    void addDescriptor(const Eeprom& eeprom) {
        DescriptorProfile descriptor;
        descriptor.device.path = eeprom.file;
        std::string lines = "[descriptor]\n" + line("device", tomlText(eeprom.file));
        if (!eeprom.size)
            return leaveOut(lines, eeprom.size.fault());
        lines += line("size", std::to_string(*eeprom.size));
        if (eeprom.type != "EEPROM")
            return leaveOut(lines, "it is a memory of the type '" + eeprom.type + "'");
        if (*eeprom.size < 1 || *eeprom.size > LARGEST_DESCRIPTOR)
            return leaveOut(lines, "a descriptor's device has 1 to " +
                                       std::to_string(LARGEST_DESCRIPTOR) + " bytes");
        if (m_hasDescriptor)
            return leaveOut(lines, "a board has one descriptor; this is one more EEPROM");
        descriptor.size = static_cast<std::uint32_t>(*eeprom.size);
        m_hasDescriptor = addChecked(lines, descriptor);
    }

    /// Adds the button as a comment, because its pipe does not exist before the bridge runs.
    void addButton() {
        std::string bridges;
        for (const InputDevice& input : inputDevicesOf(m_locator.sysfs()))
            if (input.codes)
                bridges += "#     boardctl button bridge " + printable(input.file) +
                           (input.codes->size() == 1 ? "" : " --code N") + " # " +
                           printable(input.name ? *input.name : "") + ", codes " +
                           rangesOf(*input.codes) + "\n";
        if (!bridges.empty())
            m_text += "\n# For a key as the board's button, start one of these before the host:\n" +
                      bridges + "#[button]\n#device = \"/run/board-button\"\n";
    }

    /// The first lines of an entry. Its name is `wanted`, or `kind` if `wanted` is empty. If
    /// another entry has the same name, a number is appended.
    std::string begin(const std::string& kind, const NamedPath& device,
                      const std::string& comment = "", std::string wanted = "") {
        if (wanted.empty())
            wanted = kind;
        std::string name = wanted;
        for (int number = 2; !m_names.insert(name).second; ++number)
            name = wanted + std::to_string(number);
        return "[[" + kind + "]]\n" + line("name", tomlText(name)) +
               line("device", tomlText(device.path), comment);
    }

    void leaveOut(const std::string& lines, const std::string& reason) {
        m_text += "\n# Left out: " + printable(reason) + "\n" + commented(lines);
    }

    /// Adds the entry, as a comment if something is wrong with it. Returns whether nothing is
    /// wrong.
    template <class Entry>
    bool addChecked(const std::string& lines, const Entry& entry) {
        BoardCheck check(m_locator);
        check.check(entry);
        std::vector<std::string> reasons;
        for (const BoardFinding& finding : check.findings())
            reasons.push_back(finding.fault.what);
        if (printable(entry.device.path) != entry.device.path)
            reasons.emplace_back("a profile can't contain its name");
        if (reasons.empty())
            m_text += "\n" + lines;
        else
            leaveOut(lines, join(reasons, "; "));
        return reasons.empty();
    }

    const DeviceLocator m_locator;
    std::set<std::string> m_names = {DESCRIPTOR_DRIVER, CAPACITY_DRIVER};
    bool m_hasDescriptor = false;
    std::string m_text;
};

} // namespace

std::string starterProfile(const DeviceLocator& locator) {
    return Writer(locator).write();
}

} // namespace board
