#include "sysfs/LedClass.h"

#include "base/File.h"
#include "sysfs/Attributes.h"

namespace board {

namespace {

/// The file lists all triggers, the current one in brackets.
Result<std::string> triggerOf(const std::string& file) {
    if (kindOf(file) == FileKind::MISSING)
        return std::string();
    Result<std::string> triggers = readText(file);
    const auto open = triggers ? triggers->find('[') : std::string::npos;
    const auto close = open != std::string::npos ? triggers->find(']', open) : open;
    if (!triggers)
        return triggers;
    if (close == std::string::npos)
        return Fault{file + ": marks no trigger as the current one"};
    return triggers->substr(open + 1, close - open - 1);
}

} // namespace

std::vector<LedEntry> ledsOf(const std::string& sysfs) {
    std::vector<LedEntry> leds;
    const std::string all = sysfs + "/class/leds/";
    for (const std::string& name : entriesOf(all)) {
        const std::string folder = all + name;
        leds.push_back({name, folder, readNumber(folder + "/brightness"),
                        readNumber(folder + "/max_brightness"), triggerOf(folder + "/trigger")});
    }
    return leds;
}

} // namespace board
