#include "leds/check/LedFileCheck.h"

#include <filesystem>
#include <map>

#include "LedCtrl.h"
#include "leds/LedTable.h"
#include "leds/check/LedRows.h"

namespace board {

namespace {

using LedFile = LedSequencerProfile::File;

/// The same text for all paths that mean the same file.
std::string fileOf(const std::string& path) {
    const std::string file = kernelFileOf(path);
    return std::filesystem::path(file.empty() ? path : file).lexically_normal().string();
}

} // namespace

void checkLedFiles(const LedSequencerProfile& tables, const std::vector<LedDeviceProfile>& leds,
                   LedFindings& findings) {
    std::map<std::int32_t, const LedFile*> masks;
    std::map<std::string, std::vector<const LedFile*>> files;
    for (const LedFile& file : tables.files) {
        const auto mask = static_cast<std::uint32_t>(file.mask);
        if (mask == 0)
            findings.add(LedFinding::Level::MISTAKE, file, "mask", "is 0: this LED is never lit");
        if ((mask & (mask - 1)) != 0)
            findings.add(LedFinding::Level::DOUBT, file, "mask",
                         hexOf(mask) +
                             " is several LEDs of the table: this one is lit while any of them is");
        const auto [former, isNew] = masks.insert({file.mask, &file});
        if (!isNew)
            findings.add(LedFinding::Level::MISTAKE, *former->second, "path",
                         "is never written: " + file.path.path + " has the same mask");
        former->second = &file;
    }
    if (tables.access != LedCtrl::ACCESS_FILES)
        return;
    for (const auto& [mask, file] : masks) // in the order in which a tick writes them
        files[fileOf(file->path.path)].push_back(file);
    for (const auto& [path, users] : files)
        for (const LedFile* const user : users)
            if (user != users.back())
                findings.add(LedFinding::Level::MISTAKE, *user, "path",
                             "is the file of " +
                                 hexOf(static_cast<std::uint32_t>(users.back()->mask)) +
                                 " too: each tick overwrites what this LED shows for " +
                                 hexOf(static_cast<std::uint32_t>(user->mask)));
    for (const LedDeviceProfile& led : leds)
        if (const auto found = files.find(fileOf(led.device.path)); found != files.end())
            findings.add(LedFinding::Level::MISTAKE, *found->second.back(), "path",
                         "is the device of [[led]] '" + led.name +
                             "' too: the sequencer overwrites what is set there");
}

} // namespace board
