#include "board/Firmware.h"

#include "ImageInfo.h"
#include "base/Error.h"
#include "base/File.h"

namespace board {

namespace {

/// The library reports that the file can't be opened; the system knows why.
std::string systemsReason(const std::string& path) {
    try {
        expectReadable(path);
    } catch (const Error& error) {
        return std::string(" (") + error.what() + ")";
    }
    return "";
}

} // namespace

Result<FirmwareInfo> readFirmware(const std::string& path) {
    const FileKind kind = kindOf(path);
    if (kind != FileKind::MISSING && kind != FileKind::REGULAR)
        return Fault{path + ": is not a file (expected text lines)"};
    ImageInfo info(path.c_str());
    String error;
    if (!info.init(error).isSuccess())
        return Fault{error.c_str() + systemsReason(path)};
    const FirmwareInfo firmware{info.versionString.c_str(), info.line1.c_str(), info.line2.c_str(),
                                info.line3.c_str(),         info.line6.c_str(), info.line7.c_str(),
                                info.line8.c_str()};
    const std::string all = firmware.line1 + firmware.line2 + firmware.line3 + firmware.line6 +
                            firmware.line7 + firmware.line8;
    if (all.empty())
        return Fault{path + ": holds no firmware information"};
    return firmware;
}

Result<FirmwareInfo> readFirmware(const NamedPath& file) {
    Result<FirmwareInfo> firmware = readFirmware(file.path);
    if (!firmware)
        return Fault{file.place + ": " + firmware.fault()};
    return firmware;
}

} // namespace board
