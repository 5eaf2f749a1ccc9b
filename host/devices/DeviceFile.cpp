#include "devices/DeviceFile.h"

#include <algorithm>
#include <cerrno>

#include "base/Error.h"
#include "base/Text.h"
#include "sysfs/Attributes.h"

namespace board {

void expectKind(const std::string& path, std::initializer_list<FileKind> kinds,
                const std::string& expected) {
    const FileKind kind = kindOf(path);
    if (kind == FileKind::MISSING)
        failWith(path, "can't open", errno);
    if (std::find(kinds.begin(), kinds.end(), kind) == kinds.end())
        throw Error(path + ": is not " + expected);
}

std::string maximumFileOf(const std::string& path) {
    return folderOf(path) + "max_brightness";
}

std::optional<Result<long long>> maximumOf(const std::string& path) {
    const std::string file = maximumFileOf(path);
    if (kindOf(file) == FileKind::MISSING)
        return std::nullopt;
    return readNumber(file);
}

} // namespace board
