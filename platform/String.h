#pragma once

#include <cstdarg>
#include <string>

/// The framework's text string. It owns its bytes, which may include zero bytes.
///
/// Positions and lengths count bytes. Operations that return `String&` return the string itself. If
/// memory runs out, an operation throws std::bad_alloc; nothing else fails. Several threads may
/// read a string at once, but not while another thread changes it.
class String {
public:
    String() = default;

    /// A copy of the zero-terminated `text`; empty if `text` is null.
    String(const char* text) : m_text(text ? text : "") {}

    /// A copy of `length` bytes; empty if `bytes` is null.
    String(const char* bytes, unsigned length) : m_text(bytes ? bytes : "", bytes ? length : 0) {}

    /// An empty string that lives as long as the process.
    static const String& EMPTY();

    /// The text that printf would print.
    static String format(const char* format, ...) __attribute__((format(printf, 1, 2)));

    static String vformat(const char* format, va_list arguments)
        __attribute__((format(printf, 1, 0)));

    /// Appends the text that printf would print.
    String& concatf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    String& concat(const String& text);

    /// The bytes followed by a zero byte; valid until the string changes.
    const char* c_str() const { return m_text.c_str(); }
    unsigned length() const { return static_cast<unsigned>(m_text.size()); }
    bool isEmpty() const { return m_text.empty(); }

    /// Removes blanks, tabs, newlines, carriage returns, form feeds and vertical tabs at both ends.
    String& trim();

    /// Converts the ASCII letters a to z; every other byte stays unchanged.
    String& toUpperCase();

    bool startsWith(const String& prefix) const;

    /// The signed number at the start of the text, after blanks, clamped to 32 bits on every
    /// machine; 0 if there is no number. `base` is 2 to 36, or 0 to choose the base by the prefix
    /// ("0x" or "0"), as C does. Base 16 allows the prefix "0x".
    int toInteger(int base = 10) const;

    /// The decimal number at the start of the text, after blanks, clamped to 0..4294967295 (a
    /// negative number counts as 0); 0 if there is no number.
    unsigned toUInt() const;

    friend bool operator==(const String& a, const String& b) { return a.m_text == b.m_text; }
    friend bool operator!=(const String& a, const String& b) { return a.m_text != b.m_text; }
    /// Compares byte by byte; lets strings be the keys of a map.
    friend bool operator<(const String& a, const String& b) { return a.m_text < b.m_text; }

private:
    std::string m_text;
};
