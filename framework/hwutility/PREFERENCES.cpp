#include "PREFERENCES.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <sstream>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "RTD.h"

namespace PREFERENCES {

namespace {

constexpr char LOG_CATEGORY[] = "PREFERENCES";
constexpr int LOG_ERROR = 3;
constexpr unsigned SIZE_LIMIT = 65536;

using Store = std::map<std::string, String>;

std::mutex& storeLock() {
    static std::mutex lock;
    return lock;
}

Store& store() {
    static Store preferences;
    return preferences;
}

bool parse(const String& text, unsigned minimum, unsigned maximum, unsigned& value) {
    const char* const digits = text.c_str();
    const bool hexadecimal = text.startsWith("0x") || text.startsWith("0X");
    if (digits[0] < '0' || digits[0] > '9')
        return false; // strtoull would accept blanks and signs
    char* end = nullptr;
    errno = 0;
    const unsigned long long number = std::strtoull(digits, &end, hexadecimal ? 16 : 10);
    if (end != digits + text.length() || errno != 0 || number < minimum || number > maximum)
        return false;
    value = static_cast<unsigned>(number);
    return true;
}

/// Reads the file, but not much more than SIZE_LIMIT bytes, because the file may be endless. Does
/// not block if the file is a pipe. On failure, returns false with the reason in `errno`.
bool read(const String& path, std::string& content) {
    const int file = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return false;
    char chunk[512];
    ssize_t got;
    do {
        got = ::read(file, chunk, sizeof chunk);
        if (got > 0)
            content.append(chunk, static_cast<std::size_t>(got));
    } while ((got > 0 && content.size() <= SIZE_LIMIT) || (got < 0 && errno == EINTR));
    const int reason = errno;
    ::close(file);
    errno = reason;
    return got >= 0;
}

} // namespace

XCode LOAD(const String& path, String& error) {
    std::string content;
    if (!read(path, content)) {
        error = String::format("FAILED TO READ PREFERENCES '%s': %s", path.c_str(),
                               std::strerror(errno));
        return XCode(XCode::FAILURE);
    }
    if (content.size() > SIZE_LIMIT) {
        error = String::format("FAILED TO READ PREFERENCES '%s': LARGER THAN %u BYTES",
                               path.c_str(), SIZE_LIMIT);
        return XCode(XCode::FAILURE);
    }
    std::istringstream file(content);
    Store loaded;
    std::string line;
    unsigned number = 0;
    while (std::getline(file, line)) {
        ++number;
        const String trimmed = String(line.data(), static_cast<unsigned>(line.size())).trim();
        if (trimmed.isEmpty() || trimmed.startsWith("#"))
            continue;
        const auto equals = line.find('=');
        if (equals == std::string::npos) {
            RTD::VSYSLOG(LOG_CATEGORY, LOG_ERROR, "%s:%u: '%s' IS NOT A 'key = value' LINE",
                         path.c_str(), number, trimmed.c_str());
            continue;
        }
        const std::string value = line.substr(equals + 1);
        const String key = String(line.data(), static_cast<unsigned>(equals)).trim();
        loaded[key.c_str()] = String(value.data(), static_cast<unsigned>(value.size())).trim();
    }
    const std::lock_guard<std::mutex> hold(storeLock());
    store().swap(loaded);
    return XCode();
}

void CLEAR() {
    const std::lock_guard<std::mutex> hold(storeLock());
    store().clear();
}

bool READPREF_UINT(const char* key, unsigned& value, unsigned defaultValue, unsigned minimum,
                   unsigned maximum) {
    value = defaultValue;
    String text;
    {
        const std::lock_guard<std::mutex> hold(storeLock());
        const auto found = store().find(key);
        if (found == store().end())
            return false;
        text = found->second;
    }
    if (parse(text, minimum, maximum, value))
        return true;
    RTD::VSYSLOG(LOG_CATEGORY, LOG_ERROR,
                 "PREFERENCE '%s': '%s' IGNORED, EXPECTED A NUMBER FROM %u TO %u", key,
                 text.c_str(), minimum, maximum);
    return false;
}

} // namespace PREFERENCES
