#include "devices/DeviceValue.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <limits>
#include <string_view>

#include <fcntl.h>

#include "base/File.h"
#include "base/Text.h"

namespace board {

namespace {

constexpr char BLANKS[] = " \t\n\v\f\r";
constexpr std::string_view AFTER_A_NUMBER(" \t\n\v\f\r\0", 7);
constexpr std::int32_t MOST = std::numeric_limits<std::int32_t>::max();
constexpr std::size_t WIDE = 16, NARROW = 4; ///< how many characters the drivers read
constexpr std::int32_t LARGEST_NARROW = 9999;

struct Range {
    std::int32_t minimum;
    std::int32_t maximum;
    std::size_t width;
    const char* unit; ///< may be empty
};

constexpr Range TEMPERATURES{-273150, 1000000, WIDE, "thousandths of a degree"};
constexpr Range STATUS_WORDS{0, LARGEST_NARROW, NARROW, ""};
constexpr Range SPEEDS{0, MOST, WIDE, "revolutions per minute"};
constexpr Range MODES{0, MOST, WIDE, ""};

Fault wrongValue(const std::string& path, const std::string& text, const std::string& expected) {
    constexpr std::size_t MOST_SHOWN = 32;
    const std::string held = text.substr(0, text.find_last_not_of(AFTER_A_NUMBER) + 1);
    const std::string shown =
        "'" + printable(held.substr(0, MOST_SHOWN)) + (held.size() > MOST_SHOWN ? "...'" : "'");
    return {path + ": holds " + (held.empty() ? "nothing" : shown) + " (expected " + expected +
            ")"};
}

Result<std::int32_t> parse(const std::string& path, const std::string& text, const Range& range) {
    const std::string span = std::to_string(range.minimum) + " to " + std::to_string(range.maximum);
    const std::string unit = range.unit;
    const std::size_t start = std::min(text.find_first_not_of(BLANKS), text.size());
    const bool hasPlus = text.compare(start, 1, "+") == 0;
    const std::size_t digits = start + (hasPlus || text.compare(start, 1, "-") == 0 ? 1 : 0);
    const std::size_t end = std::min(text.find_first_not_of("0123456789", digits), text.size());
    if (end == digits || text.find_first_not_of(AFTER_A_NUMBER, end) != std::string::npos)
        return wrongValue(path, text,
                          unit.empty() ? "a number from " + span : "a number of " + unit);
    if (end > range.width)
        return wrongValue(path, text,
                          "a number of at most " + std::to_string(range.width) + " characters");
    long long number = 0; // has room for a number of range.width characters
    std::from_chars(text.data() + (hasPlus ? digits : start), text.data() + end, number);
    if (number < range.minimum || number > range.maximum)
        return wrongValue(path, text, span + (unit.empty() ? "" : " " + unit));
    return static_cast<std::int32_t>(number);
}

Result<std::int32_t> readNumber(const std::string& path, const Range& range) {
    const Result<std::string> text = readContent(path);
    if (!text)
        return Fault{text.fault()};
    return parse(path, *text, range);
}

} // namespace

Result<std::int32_t> readFanLevel(const std::string& path, std::uint32_t maximum) {
    const auto highest = static_cast<std::int32_t>(std::min<std::uint32_t>(maximum, MOST));
    return readNumber(path, {0, highest, WIDE, ""});
}

Result<std::int32_t> readThousandths(const std::string& path) {
    return readNumber(path, TEMPERATURES);
}

Result<std::int32_t> readPowerStatus(const std::string& path) {
    return readNumber(path, STATUS_WORDS);
}

Result<std::int32_t> readBrightness(const std::string& path) {
    const Result<std::string> text = readContent(path);
    if (!text)
        return Fault{text.fault()};
    Range range{0, LARGEST_NARROW, NARROW, ""};
    Result<std::int32_t> number = parse(path, *text, range);
    if (!number || *number <= 1) // every LED can have these
        return number;
    if (const auto maximum = readNumber(folderOf(path) + "max_brightness", {1, MOST, WIDE, ""}))
        range.maximum = std::min(range.maximum, *maximum);
    return parse(path, *text, range);
}

Result<std::int32_t> readRpm(const std::string& path) {
    return readNumber(path, SPEEDS);
}

Result<std::int32_t> readFanMode(const std::string& path) {
    return readNumber(path, MODES);
}

Result<std::string> readContent(const std::string& path) {
    const FileDescriptor file = tryOpen(path, O_RDONLY | O_NONBLOCK);
    if (!file.isOpen())
        return Fault{path + ": can't open: " + reasonOf(errno)};
    char bytes[4096];
    const ssize_t count = tryRead(file, bytes, sizeof bytes);
    if (count < 0)
        return Fault{path + ": can't read: " + reasonOf(errno)};
    return std::string(bytes, static_cast<std::size_t>(count));
}

Result<void> writeContent(const std::string& path, const std::string& bytes) {
    const FileDescriptor file = tryOpen(path, O_WRONLY | O_TRUNC | O_NONBLOCK);
    if (!file.isOpen())
        return Fault{path + ": can't open: " + reasonOf(errno)};
    const ssize_t count = tryWrite(file, bytes.data(), bytes.size());
    if (count < 0)
        return Fault{path + ": can't write: " + reasonOf(errno)};
    if (static_cast<std::size_t>(count) < bytes.size())
        return Fault{path + ": can't write: only " + std::to_string(count) + " of " +
                     std::to_string(bytes.size()) + " bytes were accepted"};
    return {};
}

} // namespace board
