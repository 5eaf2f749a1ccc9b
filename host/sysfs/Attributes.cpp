#include "sysfs/Attributes.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>

#include "base/File.h"
#include "base/Text.h"

namespace fs = std::filesystem;

namespace board {

std::vector<std::string> entriesOf(const std::string& folder) {
    std::vector<std::string> entries;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        entries.push_back(entry->path().filename().string());
    std::sort(entries.begin(), entries.end(), [](const std::string& a, const std::string& b) {
        return ::strverscmp(a.c_str(), b.c_str()) < 0;
    });
    return entries;
}

std::string linkedName(const std::string& link) {
    std::error_code ignored;
    return fs::read_symlink(link, ignored).filename().string();
}

Result<std::string> readText(const std::string& path) {
    const std::optional<std::string> line = tryReadLine(path);
    if (!line)
        return Fault{path + ": can't read: " + reasonOf(errno)};
    return line->substr(0, line->find_last_not_of(" \t\r") + 1);
}

Result<long long> readNumber(const std::string& path) {
    constexpr std::size_t MOST_SHOWN = 32;
    const Result<std::string> text = readText(path);
    if (!text)
        return Fault{text.fault()};
    long long number = 0;
    const char* const end = text->data() + text->size();
    const auto parsed = std::from_chars(text->data(), end, number);
    if (parsed.ec == std::errc() && parsed.ptr == end)
        return number;
    return Fault{path + ": holds '" + printable(text->substr(0, MOST_SHOWN)) +
                 "' (expected a number)"};
}

} // namespace board
