#include "sysfs/DeviceLocator.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>
#include <vector>

#include "base/Error.h"
#include "base/File.h"
#include "base/Suggestion.h"
#include "base/Text.h"
#include "sysfs/Attributes.h"

namespace board {

namespace {

constexpr char MONITOR[] = "hwmon:";
constexpr char LED[] = "led:";

bool isFileName(const std::string& word) {
    return !word.empty() && word != "." && word != ".." && word.find('/') == std::string::npos;
}

std::string listOf(const std::vector<std::string>& found) {
    return found.empty() ? "none" : join(found);
}

std::string quoted(const std::string& text) {
    return "'" + text + "'";
}

std::string textOf(const Monitor& monitor) {
    return monitor.name ? *monitor.name : std::string();
}

/// NAME@BUSDEVICE of a monitor, or NAME alone if it has no device on a bus.
std::string fullNameOf(const Monitor& monitor) {
    return textOf(monitor) + (monitor.busDevice.empty() ? "" : "@" + monitor.busDevice);
}

[[noreturn]] void failToMatch(const std::string& device, const std::string& name,
                              const std::string& file, const std::vector<const Monitor*>& matches,
                              const std::vector<Monitor>& monitors) {
    std::vector<std::string> present, names, choices;
    for (const Monitor& monitor : monitors) {
        const std::string full = fullNameOf(monitor);
        present.push_back(monitor.name ? quoted(full) : monitor.name.fault());
        names.push_back(name.find('@') == std::string::npos ? textOf(monitor) : full);
    }
    for (const Monitor* const monitor : matches)
        choices.push_back(MONITOR + fullNameOf(*monitor) + "/" + file);
    if (matches.empty())
        throw Error(device + ": no monitor is named " + quoted(name) +
                    " (expected one; there are: " + listOf(present) + ")" +
                    didYouMean(name, names));
    throw Error(device + ": more than one monitor is named " + quoted(name) + " (expected " +
                joinChoices(choices) + ")");
}

/// The value files of the channels whose label is `label`.
std::vector<std::string> labeled(const Monitor& monitor, const std::vector<std::string>& files,
                                 const std::string& label) {
    constexpr std::string_view END = "_label";
    std::vector<std::string> found;
    for (const std::string& file : files) {
        const auto start = file.size() - std::min(file.size(), END.size());
        const std::string input = file.substr(0, start) + "_input";
        if (file.substr(start) != END ||
            std::find(files.begin(), files.end(), input) == files.end())
            continue;
        const Result<std::string> text = readText(monitor.folder + "/" + file);
        if (text && *text == label)
            found.push_back(input);
    }
    return found;
}

std::string locateLabel(const std::string& device, const Monitor& monitor,
                        const std::string& label) {
    const std::vector<std::string> files = filesOf(monitor);
    const std::vector<std::string> found = labeled(monitor, files, label);
    if (found.size() == 1)
        return monitor.folder + "/" + found.front();
    const std::string who = device + ": " + quoted(fullNameOf(monitor));
    if (found.empty())
        throw Error(who + " has no file and no label " + quoted(label) +
                    " (there are: " + listOf(files) + ")" + didYouMean(label, files));
    throw Error(who + " has more than one label " + quoted(label) + " (expected one of the files " +
                join(found) + ")");
}

} // namespace

/// All monitors, and the names that lead to them.
class DeviceLocator::MonitorList {
public:
    explicit MonitorList(const std::string& sysfs) : m_all(monitorsOf(sysfs)) {
        for (const Monitor& monitor : m_all) {
            if (!monitor.name)
                continue;
            m_byName[*monitor.name].push_back(&monitor);
            if (!monitor.busDevice.empty())
                m_byName[fullNameOf(monitor)].push_back(&monitor);
        }
    }
    MonitorList(const MonitorList&) = delete; // the names point into the list
    MonitorList& operator=(const MonitorList&) = delete;

    const std::vector<Monitor>& all() const { return m_all; }

    /// The monitors that `name` may mean: NAME or NAME@BUSDEVICE.
    std::vector<const Monitor*> matchesOf(const std::string& name) const {
        const auto found = m_byName.find(name);
        return found == m_byName.end() ? std::vector<const Monitor*>() : found->second;
    }

private:
    const std::vector<Monitor> m_all;
    std::unordered_map<std::string, std::vector<const Monitor*>> m_byName;
};

DeviceLocator DeviceLocator::readingOnce() const {
    DeviceLocator once(m_sysfs);
    once.m_read = std::make_shared<std::shared_ptr<const MonitorList>>();
    return once;
}

std::shared_ptr<const DeviceLocator::MonitorList> DeviceLocator::monitors() const {
    if (!m_read)
        return std::make_shared<MonitorList>(m_sysfs);
    if (!*m_read)
        *m_read = std::make_shared<MonitorList>(m_sysfs);
    return *m_read;
}

std::string DeviceLocator::locate(const std::string& device) const {
    if (device.rfind(MONITOR, 0) == 0)
        return locateMonitor(device, device.substr(sizeof MONITOR - 1));
    if (device.rfind(LED, 0) == 0)
        return locateLed(device, device.substr(sizeof LED - 1));
    return device;
}

std::string DeviceLocator::locateMonitor(const std::string& device,
                                         const std::string& words) const {
    const auto slash = std::min(words.find('/'), words.size());
    const std::string name = words.substr(0, slash);
    const std::string file = slash < words.size() ? words.substr(slash + 1) : "";
    if (name.empty() || file.empty() || file == "." || file == "..")
        throw Error(device + ": is not a hardware monitor's file (expected hwmon:NAME/FILE)");

    const std::shared_ptr<const MonitorList> list = monitors();
    const std::vector<const Monitor*> matches = list->matchesOf(name);
    if (matches.size() != 1)
        failToMatch(device, name, file, matches, list->all());
    const Monitor& monitor = *matches.front();
    std::string path = monitor.folder + "/" + file;
    // A label may contain a slash; the name of a file in the folder can't.
    const bool isFile = isFileName(file) && kindOf(path) != FileKind::MISSING;
    return isFile ? path : locateLabel(device, monitor, file);
}

std::string DeviceLocator::locateLed(const std::string& device, const std::string& name) const {
    if (!isFileName(name))
        throw Error(device + ": is not an LED's name (expected led:NAME)");
    const std::string leds = m_sysfs + "/class/leds";
    std::error_code ignored;
    if (std::filesystem::is_directory(leds + "/" + name, ignored))
        return leds + "/" + name + "/brightness";
    const std::vector<std::string> names = entriesOf(leds);
    std::vector<std::string> present;
    for (const std::string& entry : names)
        present.push_back(quoted(entry));
    throw Error(device + ": there is no LED " + quoted(name) + " (there are: " + listOf(present) +
                ")" + didYouMean(name, names));
}

std::string DeviceLocator::nameOf(const Monitor& monitor, const std::string& file) const {
    const std::string ending = "/" + file;
    std::string path = monitor.folder + ending;
    for (const std::string& name : {textOf(monitor), fullNameOf(monitor)}) {
        std::string device = MONITOR + name;
        device += ending;
        try {
            if (locate(device) == path)
                return device;
        } catch (const Error&) { // another monitor has this name too
        }
    }
    return path;
}

std::string nameOfLed(const std::string& led) {
    return LED + led;
}

} // namespace board
