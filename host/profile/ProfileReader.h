#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// The parser's assertions fail on bad input as well, such as "[!]", which it would report well by
// itself; and with NDEBUG it promises the compiler that they hold. Neither may decide what becomes
// of a profile. The limit is one of nested values: a profile needs three.
#define TOML_ASSERT(expr) static_assert(true)
#define TOML_MAX_NESTED_VALUES 16
#pragma push_macro("NDEBUG")
#undef NDEBUG
#include <toml++/impl/forward_declarations.h>
// Of letters in one block with a foreign blank, such as U+00A1 to U+0499, the parser promises the
// compiler that there are none; all that it means is that they are no blanks.
#pragma push_macro("TOML_UNREACHABLE")
#undef TOML_UNREACHABLE
#define TOML_UNREACHABLE return false
#include <toml++/impl/unicode.h>
#pragma pop_macro("TOML_UNREACHABLE")
#include <toml++/toml.h>
#pragma pop_macro("NDEBUG")

#include "base/Error.h"
#include "profile/NamedPath.h"

namespace board {

/// The one file that is being read.
struct ProfileSource {
    std::string name;             ///< as the user named it
    std::filesystem::path folder; ///< what paths in it are relative to
};

/// `text` with a question mark for each control character: a message may quote anything, and is one
/// line.
std::string oneLine(std::string text);

/// One table of the profile, read with checks. Everything that is not as it should be throws Error
/// with one line, "FILE:LINE: KEY: what is wrong (expected ...)".
class ProfileReader {
public:
    using Keys = std::initializer_list<const char*>;
    using Words = std::initializer_list<std::pair<const char*, std::int32_t>>;

    /// `place` is the table's name in messages, empty for the whole file. A key that is not among
    /// `known` is an error at once: it may be the misspelt name of one that would be missed next.
    ProfileReader(const ProfileSource& source, const toml::table& table, std::string place,
                  Keys known);

    bool has(const char* key) const { return m_table.contains(key); }

    /// A text without zero bytes, such as words and descriptions.
    std::string text(const char* key) const;
    /// A text that is not empty and has no control characters.
    std::string name(const char* key) const;
    /// A path, resolved unless it is absolute.
    NamedPath path(const char* key) const;
    /// The same, or a device by its class ("hwmon:...", "led:..."), which is left as it stands.
    NamedPath device(const char* key) const;
    bool boolean(const char* key) const;
    std::uint32_t number(const char* key, std::uint32_t minimum = 0,
                         std::uint32_t maximum = UINT32_MAX) const;
    std::int32_t signedNumber(const char* key) const;
    /// One of `words`, or any signed number.
    std::int32_t wordOrNumber(const char* key, Words words) const;

    /// The table `key`; nothing where there is none.
    std::optional<ProfileReader> table(const char* key, Keys known) const;
    /// The tables of the array `key`, none where there is none.
    std::vector<ProfileReader> tables(const char* key, Keys known) const;

    /// The table's place, for messages: "FILE:LINE: TABLE".
    std::string where() const { return lineOf(m_table.source()) + m_place; }

    /// The full name of `key`, such as "fan[0].name".
    std::string placeOf(const std::string& key) const;

    [[noreturn]] void fail(const char* key, const std::string& what) const;

private:
    std::string lineOf(const toml::source_region& region) const;
    [[noreturn]] void failAt(const toml::source_region& region, const std::string& place,
                             const std::string& what) const;
    const toml::node& node(const char* key) const;
    std::int64_t integer(const char* key, std::int64_t minimum, std::int64_t maximum) const;

    const ProfileSource& m_source;
    const toml::table& m_table;
    std::string m_place;
};

} // namespace board
