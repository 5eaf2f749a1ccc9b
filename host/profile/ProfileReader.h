#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "profile/NamedPath.h"
#include "profile/ProfileError.h"
#include "profile/Toml.h"

namespace board {

/// The profile file that is being read.
struct ProfileSource {
    std::string name;   ///< as the user named it
    std::string folder; ///< the base of relative paths; ends with a slash, or is empty
};

/// One table of the profile, read with checks. Every function throws ProfileError if the profile
/// is wrong, with one line: "FILE:LINE: KEY: what is wrong (expected ...)".
class ProfileReader {
public:
    using Keys = std::initializer_list<const char*>;
    using Words = std::initializer_list<std::pair<const char*, std::int32_t>>;

    /// `place` is the table's name in messages, empty for the whole file. A key that is not among
    /// `known` is reported before any missing key, because it may be a misspelling of the missing
    /// key.
    ProfileReader(const ProfileSource& source, const toml::table& table, std::string place,
                  Keys known);

    bool has(const char* key) const { return m_table.contains(key); }

    /// A string without zero bytes, such as a description.
    std::string text(const char* key) const;
    /// A string that is not empty and has no control characters.
    std::string name(const char* key) const;
    /// A path, resolved unless it is absolute.
    NamedPath path(const char* key) const;
    /// The same as `path`, but leaves a device named by its class unchanged ("hwmon:...",
    /// "led:...").
    NamedPath device(const char* key) const;
    bool boolean(const char* key) const;
    std::uint32_t number(const char* key, std::uint32_t minimum = 0,
                         std::uint32_t maximum = UINT32_MAX) const;
    std::int32_t signedNumber(const char* key) const;
    /// A number with or without decimals.
    double decimal(const char* key, double minimum, double maximum) const;
    /// One of `words`.
    std::int32_t word(const char* key, Words words) const;
    /// One of `words`, or any signed number.
    std::int32_t wordOrNumber(const char* key, Words words) const;

    /// The table `key`, if there is one.
    std::optional<ProfileReader> table(const char* key, Keys known) const;
    /// The tables of the array `key`; none if there is no such key.
    std::vector<ProfileReader> tables(const char* key, Keys known) const;

    /// The table's place, for messages: "FILE:LINE: TABLE".
    std::string where() const { return lineOf(m_table.source()) + m_place; }

    /// The place of `key`, which must be in the table: "FILE:LINE: KEY".
    std::string where(const char* key) const { return lineOf(node(key).source()) + placeOf(key); }

    /// The full name of `key`, such as "fan[0].name".
    std::string placeOf(const std::string& key) const;

    [[noreturn]] void fail(const char* key, const std::string& what) const;

private:
    std::string lineOf(const toml::source_region& region) const;
    [[noreturn]] void failAt(const toml::source_region& region, const std::string& place,
                             const std::string& what) const;
    std::int32_t wordOr(const char* key, Words words, const char* alternative) const;
    const toml::node& node(const char* key) const;
    std::int64_t integer(const char* key, std::int64_t minimum, std::int64_t maximum) const;

    const ProfileSource& m_source;
    const toml::table& m_table;
    std::string m_place;
};

} // namespace board
