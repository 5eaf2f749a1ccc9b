#include "DeviceFile.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include <fcntl.h>
#include <unistd.h>

#include "DeviceDescriptor.h"

namespace devicefile {

namespace {

/// Descriptor 0 counts as a failure.
bool isOpen(const DeviceDescriptor& file) {
    return file.number() > 0;
}

} // namespace

bool canOpen(const char* path) {
    return isOpen(DeviceDescriptor(path, O_RDONLY));
}

bool readDecimal(const char* path, unsigned width, int& number) {
    const DeviceDescriptor file(path, O_RDONLY);
    if (!isOpen(file))
        return false;
    char text[MAX_WIDTH + 1] = {}; // one extra byte, because a full record has no terminator
    if (::read(file.number(), text, std::min(width, MAX_WIDTH)) < 0)
        text[0] = '\0';
    number = static_cast<int>(std::clamp<long long>(std::strtol(text, nullptr, 10),
                                                    std::numeric_limits<std::int32_t>::min(),
                                                    std::numeric_limits<std::int32_t>::max()));
    return true;
}

bool writeDecimal(const char* path, unsigned width, unsigned number) {
    const DeviceDescriptor file(path, O_WRONLY);
    if (!isOpen(file))
        return false;
    char record[MAX_WIDTH] = {};
    std::snprintf(record, sizeof record, "%d", static_cast<std::int32_t>(number));
    // The result is ignored: by contract, a write does not report whether the device accepted the
    // number. To find out, the client reads the device back.
    const auto written = ::write(file.number(), record, std::min(width, MAX_WIDTH));
    static_cast<void>(written);
    return true;
}

} // namespace devicefile
