#include "board/Firmware.h"

#include <cctype>
#include <cerrno>

#include <fcntl.h>

#include "ImageInfo.h"
#include "base/Error.h"
#include "base/File.h"

namespace board {

namespace {

/// Why the file can't be opened: the library only reports that it can't.
std::string systemsReason(const std::string& path) {
    try {
        expectReadable(path);
    } catch (const Error& error) {
        return std::string(" (") + error.what() + ")";
    }
    return "";
}

/// The bytes from which the library takes its lines: eight lines, or pieces of longer ones. Empty
/// if the file can't be opened, which the library will report. Throws Error for pipes and folders,
/// because they can't be read at a position.
std::string look(const std::string& path) {
    constexpr std::size_t LINES = 8;
    constexpr std::size_t LONGEST = 126;
    char bytes[LINES * LONGEST];
    const FileDescriptor file = tryOpen(path, O_RDONLY | O_NONBLOCK);
    if (!file.isOpen())
        return "";
    const ssize_t count = tryReadAt(file, bytes, sizeof bytes, 0);
    if (count < 0 && (errno == ESPIPE || errno == EISDIR))
        throw Error(path + ": is not a file (expected text lines)");
    if (count < 0)
        failWith(path, "can't read", errno);
    const std::string text(bytes, static_cast<std::size_t>(count));
    std::size_t end = text.find('\n');
    for (std::size_t line = 1; line < LINES && end != std::string::npos; ++line)
        end = text.find('\n', end + 1);
    return text.substr(0, end);
}

/// A copy of the texts, so that it outlives `info`.
FirmwareInfo copyOf(const ImageInfo& info) {
    FirmwareInfo copy;
    copy.version = info.versionString.c_str();
    copy.line1 = info.line1.c_str();
    copy.line2 = info.line2.c_str();
    copy.line3 = info.line3.c_str();
    copy.line6 = info.line6.c_str();
    copy.line7 = info.line7.c_str();
    copy.line8 = info.line8.c_str();
    return copy;
}

/// The library accepts any bytes as lines and cuts them at a zero byte. Throws Error if the bytes
/// are not text, or if the first line, which is the version, is empty.
void expectInformation(const std::string& path, const std::string& text,
                       const FirmwareInfo& firmware) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (std::iscntrl(byte) != 0 && std::isspace(byte) == 0)
            throw Error(path + ": byte " + std::to_string(i) +
                        " is not text (expected the lines of a firmware information file)");
    }
    const std::string others =
        firmware.line2 + firmware.line3 + firmware.line6 + firmware.line7 + firmware.line8;
    if (firmware.line1.empty())
        throw Error(path + (others.empty() ? ": holds no firmware information"
                                           : ": line 1 is empty (expected the version)"));
}

} // namespace

Result<FirmwareInfo> readFirmware(const std::string& path) {
    try {
        const std::string text = look(path);
        ImageInfo info(path.c_str());
        String error;
        if (!info.init(error).isSuccess())
            return Fault{error.c_str() + systemsReason(path)};
        FirmwareInfo firmware = copyOf(info);
        expectInformation(path, text, firmware);
        return firmware;
    } catch (const Error& fault) {
        return Fault{fault.what()};
    }
}

Result<FirmwareInfo> readFirmware(const NamedPath& file) {
    Result<FirmwareInfo> firmware = readFirmware(file.path);
    if (!firmware)
        return Fault{file.place + ": " + firmware.fault()};
    return firmware;
}

} // namespace board
