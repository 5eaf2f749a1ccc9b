#include "sysfs/Eeproms.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "base/File.h"
#include "sysfs/Attributes.h"

namespace fs = std::filesystem;

namespace board {

namespace {

Eeprom eepromAt(const std::string& file, const std::string& type) {
    const off_t size = trySize(file);
    if (size < 0)
        return {file, Fault{file + ": can't be examined: " + reasonOf(errno)}, type};
    return {file, static_cast<long long>(size), type};
}

/// The path without symbolic links; the path itself if it can't be resolved.
fs::path resolved(const fs::path& path) {
    std::error_code error;
    fs::path real = fs::canonical(path, error);
    return error ? path : real;
}

} // namespace

std::vector<Eeprom> eepromsOf(const std::string& sysfs) {
    std::vector<Eeprom> eeproms;
    std::vector<fs::path> devices;
    for (const char* const bus : {"/bus/i2c/devices/", "/bus/spi/devices/"}) {
        const std::string all = sysfs + bus;
        for (const std::string& device : entriesOf(all)) {
            const std::string folder = all + device;
            const std::string file = folder + "/eeprom";
            if (kindOf(file) != FileKind::REGULAR)
                continue;
            eeproms.push_back(eepromAt(file, "EEPROM"));
            devices.push_back(resolved(folder));
        }
    }
    const std::string all = sysfs + "/bus/nvmem/devices/";
    for (const std::string& memory : entriesOf(all)) {
        const fs::path device = resolved(all + memory).parent_path();
        if (std::find(devices.begin(), devices.end(), device) == devices.end())
            eeproms.push_back(eepromAt(all + memory + "/nvmem",
                                       tryReadLine(all + memory + "/type").value_or("")));
    }
    return eeproms;
}

} // namespace board
