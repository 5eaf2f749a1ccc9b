#include "ImageInfo.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr unsigned LINE_SIZE = 127;
constexpr unsigned VALUE_WIDTH = 10;
constexpr unsigned LINES = 8;

void readLine(std::FILE* file, String& line) {
    char text[LINE_SIZE];
    if (std::fgets(text, sizeof text, file))
        line = String(text).trim();
}

} // namespace

ImageInfo::ImageInfo(const String& path) : m_path(path) {}

ImageInfo::~ImageInfo() = default;

XCode ImageInfo::init(String& error) {
    std::FILE* const file = std::fopen(m_path.c_str(), "re");
    if (!file) {
        error = String::format("OPEN '%s' FAILED", m_path.c_str());
        return XCode(XCode::FAILURE);
    }
    // Providing a buffer saves the system call that asks for the preferred buffer size.
    char buffer[LINES * (LINE_SIZE - 1)]; // the most that is read
    static_cast<void>(std::setvbuf(file, buffer, _IOFBF, sizeof buffer));
    String skipped;
    for (String* const line : {&line1, &line2, &line3, &skipped, &skipped, &line6, &line7, &line8})
        readLine(file, *line);
    static_cast<void>(std::fclose(file));

    if (line2 == "Branch")
        versionString = String(line1.c_str())
                            .concat("-")
                            .concat(line7.c_str())
                            .concat("/")
                            .concat(line3.c_str());
    else if (line2 != "Test")
        versionString = line1;
    else
        versionString = String(line1.c_str()).concat("/").concat(line3.c_str());
    return XCode();
}

XCode readValueFromFile(const String& path, int& value) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return XCode(XCode::FAILURE);
    char text[VALUE_WIDTH + 1] = {}; // one extra byte, because a full read has no terminator
    const ssize_t length = ::read(descriptor, text, VALUE_WIDTH);
    ::close(descriptor);
    if (length < 1)
        return XCode(XCode::FAILURE);
    char* end = nullptr;
    const long long number = std::strtoll(text, &end, 0);
    if (end != text)
        value =
            static_cast<int>(std::clamp<long long>(number, std::numeric_limits<std::int32_t>::min(),
                                                   std::numeric_limits<std::int32_t>::max()));
    return XCode();
}
