#include "profile/DeviceLocator.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "base/Error.h"
#include "base/File.h"
#include "base/Suggestion.h"
#include "base/Text.h"

namespace fs = std::filesystem;

namespace board {

namespace {

constexpr char MONITOR[] = "hwmon:";
constexpr char LED[] = "led:";

bool isFileName(const std::string& word) {
    return !word.empty() && word != "." && word != ".." && word.find('/') == std::string::npos;
}

/// The entries of a folder, sorted by name; none if it can't be read.
std::vector<fs::path> entriesOf(const fs::path& folder) {
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        entries.push_back(entry->path());
    std::sort(entries.begin(), entries.end());
    return entries;
}

std::string listOf(const std::vector<std::string>& found) {
    return found.empty() ? "none" : join(found);
}

} // namespace

std::string DeviceLocator::locate(const std::string& device) const {
    if (device.rfind(MONITOR, 0) == 0)
        return locateMonitor(device, device.substr(sizeof MONITOR - 1));
    if (device.rfind(LED, 0) == 0)
        return locateLed(device, device.substr(sizeof LED - 1));
    return device;
}

std::string DeviceLocator::locateMonitor(const std::string& device,
                                         const std::string& words) const {
    const auto slash = words.find('/');
    const std::string name = words.substr(0, slash);
    const std::string file = slash == std::string::npos ? "" : words.substr(slash + 1);
    if (name.empty() || !isFileName(file))
        throw Error(device + ": is not a hardware monitor's file (expected hwmon:NAME/FILE)");

    std::vector<fs::path> matches;
    std::vector<std::string> present, names;
    for (const fs::path& entry : entriesOf(fs::path(m_sysfs) / "class/hwmon")) {
        const std::string itsName = tryReadLine((entry / "name").string()).value_or("");
        present.push_back("'" + itsName + "' at " + entry.filename().string());
        names.push_back(itsName);
        if (itsName == name)
            matches.push_back(entry);
    }
    if (matches.size() != 1)
        throw Error(device + ": " + (matches.empty() ? "no" : "more than one") +
                    " monitor is named '" + name + "' (expected one; there are: " +
                    listOf(present) + ")" + (matches.empty() ? didYouMean(name, names) : ""));
    return (matches.front() / file).string();
}

std::string DeviceLocator::locateLed(const std::string& device, const std::string& name) const {
    if (!isFileName(name))
        throw Error(device + ": is not an LED's name (expected led:NAME)");
    const fs::path leds = fs::path(m_sysfs) / "class/leds";
    std::error_code ignored;
    if (fs::is_directory(leds / name, ignored))
        return (leds / name / "brightness").string();
    std::vector<std::string> present, names;
    for (const fs::path& entry : entriesOf(leds)) {
        names.push_back(entry.filename().string());
        present.push_back("'" + names.back() + "'");
    }
    throw Error(device + ": there is no LED '" + name + "' (there are: " + listOf(present) + ")" +
                didYouMean(name, names));
}

} // namespace board
