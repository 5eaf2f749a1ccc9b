#include "DeviceFile.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include <fcntl.h>
#include <unistd.h>

namespace devicefile {

namespace {

/// Opens a file for one operation. Descriptor 0 counts as a failure but is closed too, so it does
/// not leak.
class Opened {
public:
    Opened(const char* path, int flags) : m_descriptor(::open(path, flags)) {}
    ~Opened() {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;
    explicit operator bool() const { return m_descriptor > 0; }
    int get() const { return m_descriptor; }

private:
    const int m_descriptor;
};

} // namespace

bool canOpen(const char* path) {
    return static_cast<bool>(Opened(path, O_RDONLY));
}

bool readDecimal(const char* path, unsigned width, int& number) {
    const Opened file(path, O_RDONLY);
    if (!file)
        return false;
    char text[MAX_WIDTH + 1] = {}; // one byte more than is read: a full record has no terminator
    if (::read(file.get(), text, std::min(width, MAX_WIDTH)) < 0)
        text[0] = '\0';
    number = static_cast<int>(std::clamp<long long>(std::strtol(text, nullptr, 10),
                                                    std::numeric_limits<std::int32_t>::min(),
                                                    std::numeric_limits<std::int32_t>::max()));
    return true;
}

bool writeDecimal(const char* path, unsigned width, unsigned number) {
    const Opened file(path, O_WRONLY);
    if (!file)
        return false;
    char record[MAX_WIDTH] = {};
    std::snprintf(record, sizeof record, "%d", static_cast<std::int32_t>(number));
    // The result is ignored: by contract a write reports nothing, and reading the device back shows
    // whether it accepted the number.
    const auto written = ::write(file.get(), record, std::min(width, MAX_WIDTH));
    static_cast<void>(written);
    return true;
}

} // namespace devicefile
