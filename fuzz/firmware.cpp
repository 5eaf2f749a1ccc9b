// Reads arbitrary bytes as an information file and as a file with a number, and compares the
// results with the contract in the headers.

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>

#include <sys/mman.h>
#include <unistd.h>

#include "ImageInfo.h"
#include "Oracle.h"

using fuzz::expect;

namespace {

/// Whether the C library treats `c` as white space.
bool isBlank(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

std::array<std::string, 8> linesOf(const std::string& text) {
    constexpr std::size_t LONGEST = 126;
    std::array<std::string, 8> lines;
    std::size_t start = 0;
    for (std::string& line : lines) {
        const std::size_t newline = text.find('\n', start);
        const std::size_t end = std::min({newline == std::string::npos ? text.size() : newline + 1,
                                          start + LONGEST, text.size()});
        line = text.substr(start, end - start).c_str(); // ends at the first zero byte
        line.erase(line.begin(), std::find_if_not(line.begin(), line.end(), isBlank));
        while (!line.empty() && isBlank(line.back()))
            line.pop_back();
        start = end;
    }
    return lines;
}

void checkInfo(const String& path, const std::string& text) {
    ImageInfo info(path);
    String error;
    expect(info.init(error).isSuccess() && error.isEmpty(), "any file is information");
    const auto lines = linesOf(text);
    expect(info.line1 == lines[0].c_str() && info.line2 == lines[1].c_str() &&
               info.line3 == lines[2].c_str() && info.line6 == lines[5].c_str() &&
               info.line7 == lines[6].c_str() && info.line8 == lines[7].c_str(),
           "lines are those of the file without blanks at both ends");
    std::string version = lines[0];
    if (lines[1] == "Branch")
        version += "-" + lines[6];
    if (lines[1] == "Branch" || lines[1] == "Test")
        version += "/" + lines[2];
    expect(info.versionString == version.c_str(), "the version is by the kind of build");
}

void checkValue(const String& path, const std::string& text) {
    constexpr int UNTOUCHED = -123456789;
    int value = UNTOUCHED;
    const bool isRead = readValueFromFile(path, value).isSuccess();
    expect(isRead == !text.empty(), "any file that is not empty can be read");

    const std::string word = text.substr(0, 10);
    std::size_t i = 0;
    const auto at = [&](std::size_t k) { return k < word.size() ? word[k] : '\0'; };
    while (isBlank(at(i)))
        ++i;
    const bool isNegative = at(i) == '-';
    if (isNegative || at(i) == '+')
        ++i;
    const bool isHex = at(i) == '0' && (at(i + 1) == 'x' || at(i + 1) == 'X') &&
                       std::isxdigit(static_cast<unsigned char>(at(i + 2))) != 0;
    const std::string digits = isHex          ? "0123456789abcdef"
                               : at(i) == '0' ? "01234567"
                                              : "0123456789";
    i += isHex ? 2 : 0;
    long long number = 0;
    const std::size_t start = i;
    for (;; ++i) {
        const std::size_t digit =
            at(i) == '\0' ? std::string::npos : digits.find(static_cast<char>(std::tolower(at(i))));
        if (digit == std::string::npos)
            break;
        number = number * static_cast<long long>(digits.size()) + static_cast<long long>(digit);
    }
    number = std::clamp<long long>(isNegative ? -number : number, INT32_MIN, INT32_MAX);
    expect(value == (i > start ? number : UNTOUCHED),
           "the value is the number of the first ten bytes");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const int file = ::memfd_create("firmware", MFD_CLOEXEC);
    if (::ftruncate(file, 0) != 0 || ::pwrite(file, bytes, size, 0) != static_cast<ssize_t>(size))
        std::abort();
    const String path = String::format("/proc/self/fd/%d", file);
    const std::string text = fuzz::textOf(bytes, size);
    checkInfo(path, text);
    checkValue(path, text);
    return 0;
}
