#include "leds/LedTable.h"

#include <map>
#include <string_view>

#include "base/Error.h"
#include "base/Text.h"
#include "leds/LedRow.h"

namespace board {

std::string ledNameOf(const std::string& path) {
    std::string name = fileNameOf(path), folder = folderOf(path);
    if (name == "brightness" && !folder.empty()) {
        folder.pop_back();
        return fileNameOf(folder);
    }
    constexpr char CLASS[] = "led:"; // a name that has not been resolved to a path
    return path.rfind(CLASS, 0) == 0 ? path.substr(sizeof CLASS - 1) : name;
}

std::string kernelFileOf(const std::string& device, const DeviceLocator& locator) {
    constexpr std::string_view CLASS = "led:";
    if (device.rfind(CLASS, 0) != 0 || device.find('/') != std::string::npos)
        return "";
    return locator.sysfs() + "/class/leds/" + device.substr(CLASS.size()) + "/brightness";
}

LedTable::LedTable(const LedSequencerProfile& profile, const DeviceLocator& locator) {
    for (const LedRow& row : profile.commands)
        m_commands.push_back(definitionOf(row));
    const DeviceLocator search = locator.readingOnce();
    std::map<std::uint32_t, Led> leds;
    for (const LedSequencerProfile::File& file : profile.files) {
        Led led{static_cast<std::uint32_t>(file.mask), ledNameOf(file.path.path), "", file.on};
        led.color = file.color;
        try {
            withPlaceInErrors(file.path, [&](const std::string& named) {
                led.path = search.locate(named);
                led.name = ledNameOf(led.path);
            });
        } catch (const Error& error) {
            led.fault = error.what();
            if (profile.access == LedCtrl::ACCESS_FILES) // otherwise nobody watches for the file
                led.path = kernelFileOf(file.path.path, locator);
            if (led.path.empty())
                m_faults.push_back(led.fault);
        }
        if (!file.name.empty())
            led.name = file.name;
        leds[led.mask] = led;
    }
    for (auto& [mask, led] : leds)
        m_leds.push_back(std::move(led));
    for (const Led& led : m_leds) // only now: entries point to paths, which move above
        if (!led.path.empty())
            m_files.push_back({static_cast<std::int32_t>(led.mask), led.path.c_str()});
}

} // namespace board
