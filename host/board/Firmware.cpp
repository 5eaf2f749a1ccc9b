#include "board/Firmware.h"

#include "ImageInfo.h"
#include "base/File.h"
#include "profile/NamedPath.h"

namespace board {

namespace {

/// The library's text says that the file can't be opened; the system's says why.
std::string reasonOf(const std::string& path) {
    try {
        expectReadable(path);
    } catch (const Error& error) {
        return std::string(" (") + error.what() + ")";
    }
    return "";
}

} // namespace

FirmwareReading readFirmware(const std::string& path) {
    FirmwareReading reading;
    const FileKind kind = kindOf(path);
    if (kind != FileKind::MISSING && kind != FileKind::REGULAR) {
        reading.fault = path + ": is not a file (expected text lines)";
        return reading;
    }
    ImageInfo info(path.c_str());
    String error;
    if (!info.init(error).isSuccess()) {
        reading.fault = error.c_str() + reasonOf(path);
        return reading;
    }
    reading.version = info.versionString.c_str();
    reading.line1 = info.line1.c_str();
    reading.line2 = info.line2.c_str();
    reading.line3 = info.line3.c_str();
    reading.line6 = info.line6.c_str();
    reading.line7 = info.line7.c_str();
    reading.line8 = info.line8.c_str();
    const std::string all = reading.line1 + reading.line2 + reading.line3 + reading.line6 +
                            reading.line7 + reading.line8;
    if (all.empty())
        reading.fault = path + ": holds no firmware information";
    return reading;
}

} // namespace board
