#pragma once

#include <optional>
#include <string>
#include <vector>

#include "descriptor/TagImage.h"
#include "descriptor/list/JsonEntries.h"

namespace board {

/// Interprets one entry of a JSON list of tags. On a mistake, all functions throw an Error that
/// names the line, the entry and what was expected there.
class TagEntry {
public:
    /// The keys that an entry with a value may have.
    static const std::vector<std::string>& keys();

    /// The keys among them that hold the tag's value. An entry must have exactly one of these.
    static const std::vector<std::string>& valueKeys();

    /// `entry` must outlive this object.
    explicit TagEntry(const JsonEntry& entry) : m_entry(entry) {}

    /// The identifier: a number from 1 to 65534, 0 for the terminator, or a name. Throws if "name"
    /// is the name of another identifier; any other text there, such as a remark, passes.
    BD::TagId id() const;

    /// The one member whose key is in `keys`; throws if there are several, or none.
    const JsonMember& oneOf(const std::vector<std::string>& keys) const;

    /// The tag that the entry describes with a key such as "data" or "text". If there is a
    /// "length", it must be that of the data.
    BD::Tag tag() const;

    /// Throws, because the entry comes after the terminator.
    [[noreturn]] void failAfterEnd() const;

    ///@{
    /// The value of a member, checked.
    std::string text(const JsonMember& member, const char* expected) const;
    unsigned number(const JsonMember& member, unsigned maximum) const; ///< 12, "12" or "0xc"
    std::string address(const JsonMember& member) const;               ///< six bytes
    ///@}

    /// The number after "iface"; empty if the entry does not have the key.
    std::optional<unsigned> interface() const;

private:
    BD::TagId idAlone() const;
    std::string hex(const JsonMember& member) const;
    std::string bytesOf(const JsonMember& member) const;

    const JsonEntry& m_entry;
};

} // namespace board
