#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace board {

/// One key of an entry with its value. An array or object is stored here without its content,
/// because no key accepts one.
struct JsonMember {
    std::string key;
    nlohmann::json value;
    std::size_t line; ///< where the key is, counted from 1
};

/// One object of a JSON array of objects. No key occurs twice.
struct JsonEntry {
    /// The member with that key; null if there is none.
    const JsonMember* find(const std::string& key) const;

    /// Throws Error that names the source, the line of `member` (null: of the entry) and the entry.
    [[noreturn]] void fail(const JsonMember* member, const std::string& what) const;

    std::string source; ///< what messages call the text
    std::size_t number; ///< in the array, counted from 0
    std::size_t line;   ///< where the entry begins, counted from 1
    std::vector<JsonMember> members;
};

/// Reads a JSON array of objects with no other keys than `keys`, and passes the objects to `take`,
/// one by one in their order. Throws Error if the text is something else; the entries before the
/// mistake have been passed by then. Also throws for more entries than an image can hold, for deep
/// nesting, and if the program is asked to end meanwhile (see isEndAsked). Time and memory are
/// proportional to the length of the text, whatever it contains.
void readEntries(const std::string& text, const std::string& source,
                 const std::vector<std::string>& keys,
                 const std::function<void(const JsonEntry&)>& take);

/// A value for a message: a number or a boolean itself; for other values, which may be large, only
/// the type.
std::string shown(const nlohmann::json& value);

} // namespace board
