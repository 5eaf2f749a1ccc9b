#include "sysfs/Monitors.h"

#include <algorithm>
#include <iterator>

#include "base/File.h"
#include "base/Text.h"
#include "sysfs/Attributes.h"

namespace board {

namespace {

constexpr Quantity QUANTITIES[] = {{"temp", "C", 3},  {"fan", "rpm", 0},   {"in", "V", 3},
                                   {"curr", "A", 3},  {"power", "W", 6},   {"energy", "J", 6},
                                   {"freq", "Hz", 0}, {"humidity", "%", 3}};

constexpr const char* LIMITS[] = {"lcrit", "min",       "max",       "max_hyst",
                                  "crit",  "crit_hyst", "emergency", "cap"};

bool contains(const std::vector<std::string>& files, const std::string& file) {
    return std::find(files.begin(), files.end(), file) != files.end();
}

/// The quantity of a channel such as "temp1"; null if it is not known here.
const Quantity* quantityOf(const std::string& channel) {
    const auto digits = std::min(channel.find_first_of("0123456789"), channel.size());
    const auto found =
        std::find_if(std::begin(QUANTITIES), std::end(QUANTITIES), [&](const Quantity& quantity) {
            return channel.compare(0, digits, quantity.kind) == 0;
        });
    return found != std::end(QUANTITIES) && isDigits(channel.substr(digits)) ? &*found : nullptr;
}

/// Whether the file of `attribute` holds the channel's value. A power sensor may have only an
/// average.
bool isValue(const std::string& channel, const std::string& attribute,
             const std::vector<std::string>& files) {
    return attribute == "input" || (attribute == "average" && !contains(files, channel + "_input"));
}

} // namespace

std::vector<Monitor> monitorsOf(const std::string& sysfs) {
    std::vector<Monitor> monitors;
    const std::string all = sysfs + "/class/hwmon/";
    for (const std::string& entry : entriesOf(all)) {
        const std::string folder = all + entry;
        monitors.push_back({folder, linkedName(folder + "/device"), readText(folder + "/name")});
    }
    return monitors;
}

std::vector<std::string> filesOf(const Monitor& monitor) {
    std::vector<std::string> files;
    for (std::string& entry : entriesOf(monitor.folder))
        if (entry != "name" && entry != "uevent" &&
            kindOf(monitor.folder + "/" + entry) == FileKind::REGULAR)
            files.push_back(std::move(entry));
    return files;
}

std::vector<Sensor> sensorsOf(const Monitor& monitor) {
    std::vector<Sensor> sensors;
    const std::vector<std::string> files = filesOf(monitor);
    for (const std::string& file : files) {
        const auto split = std::min(file.find('_'), file.size());
        const std::string channel = file.substr(0, split);
        const Quantity* const quantity = quantityOf(channel);
        if (!quantity || split == file.size() || !isValue(channel, file.substr(split + 1), files))
            continue;
        const std::string stem = channel + "_";
        const std::string start = monitor.folder + "/" + stem;
        Sensor sensor{
            file, channel, quantity, std::string(), readNumber(monitor.folder + "/" + file), {}};
        if (contains(files, stem + "label"))
            sensor.label = readText(start + "label");
        for (const std::string limit : LIMITS)
            if (contains(files, stem + limit))
                sensor.limits.emplace_back(limit, readNumber(start + limit));
        sensors.push_back(std::move(sensor));
    }
    return sensors;
}

std::vector<Pwm> pwmsOf(const Monitor& monitor) {
    constexpr char KIND[] = "pwm";
    std::vector<Pwm> pwms;
    const std::vector<std::string> files = filesOf(monitor);
    for (const std::string& file : files) {
        if (file.rfind(KIND, 0) != 0 || !isDigits(file.substr(sizeof KIND - 1)))
            continue;
        Pwm pwm{file, readNumber(monitor.folder + "/" + file), "", std::nullopt, ""};
        const std::string tach = "fan" + file.substr(sizeof KIND - 1) + "_input";
        if (contains(files, tach))
            pwm.tach = tach;
        if (contains(files, file + "_enable")) {
            pwm.enable = file + "_enable";
            pwm.mode = readNumber(monitor.folder + "/" + pwm.enable);
        }
        pwms.push_back(std::move(pwm));
    }
    return pwms;
}

} // namespace board
