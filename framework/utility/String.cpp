#include "String.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace {

/// Formats into `line` on the stack, and a second time, into `text`, only if the text does not fit.
__attribute__((format(printf, 1, 0))) std::string formatted(const char* format, va_list arguments) {
    char line[128];
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    std::string text;
    if (length < static_cast<int>(sizeof line)) {
        text.assign(line, length > 0 ? static_cast<std::size_t>(length) : 0);
    } else {
        text.resize(static_cast<std::size_t>(length));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

} // namespace

const String& String::EMPTY() {
    static const String empty;
    return empty;
}

String String::format(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    String result = vformat(format, arguments);
    va_end(arguments);
    return result;
}

String String::vformat(const char* format, va_list arguments) {
    String result;
    result.m_text = formatted(format, arguments);
    return result;
}

String& String::concatf(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    // Format the whole text before appending it: an argument may point into this string.
    m_text += formatted(format, arguments);
    va_end(arguments);
    return *this;
}

String& String::concat(const String& text) {
    m_text += text.m_text;
    return *this;
}

String& String::trim() {
    const auto notBlank = [](char c) { return !isBlank(c); };
    m_text.erase(std::find_if(m_text.rbegin(), m_text.rend(), notBlank).base(), m_text.end());
    m_text.erase(m_text.begin(), std::find_if(m_text.begin(), m_text.end(), notBlank));
    return *this;
}

String& String::toUpperCase() {
    for (char& c : m_text)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return *this;
}

bool String::startsWith(const String& prefix) const {
    return m_text.compare(0, prefix.m_text.size(), prefix.m_text) == 0;
}

// strtoll, not strtol: `long` has 32 bits on the board and may have 64 elsewhere, but a number must
// be clamped the same way on every machine.
int String::toInteger(int base) const {
    const long long value = std::strtoll(m_text.c_str(), nullptr, base);
    return static_cast<int>(std::clamp<long long>(value, std::numeric_limits<std::int32_t>::min(),
                                                  std::numeric_limits<std::int32_t>::max()));
}

unsigned String::toUInt() const {
    const long long value = std::strtoll(m_text.c_str(), nullptr, 10);
    return static_cast<unsigned>(
        std::clamp<long long>(value, 0, std::numeric_limits<std::uint32_t>::max()));
}
