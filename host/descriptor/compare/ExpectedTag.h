#pragma once

#include <optional>
#include <string>
#include <variant>

#include "descriptor/TagImage.h"
#include "descriptor/compare/TextPattern.h"

namespace board {

struct AnyValue {};

/// Data of this many bytes; data of odd size is loaded with one byte more.
struct DataSize {
    std::size_t bytes;
};

/// A MAC address from `first` to `last`, six bytes each, of the interface if one is named.
struct AddressRange {
    std::string first, last;
    std::optional<unsigned> interface;
};

/// What a tag must be like.
class ExpectedTag {
public:
    /// The data of a tag as it is loaded, or a pattern.
    using Value = std::variant<TString<char>, AnyValue, DataSize, TextPattern, AddressRange>;

    ExpectedTag(BD::TagId id, Value value);
    /// A tag with the same data: data of odd size may have a padding byte.
    explicit ExpectedTag(const BD::Tag& tag);

    BD::TagId id() const { return m_id; }

    /// The data as it is loaded; null for a pattern.
    const TString<char>* data() const { return std::get_if<TString<char>>(&m_value); }

    /// Whether a tag with this identifier has the data that is expected.
    bool isMetBy(const BD::Tag& tag) const;

    /// For people: what `valueWords` returns for exact data, or the pattern, such as "4 bytes".
    std::string words() const;

private:
    BD::TagId m_id;
    Value m_value;
};

/// The data of a tag for people, as its meaning suggests: an address with its interface, a text in
/// quotes, a decimal number, or hexadecimal digits; long data is cut. If `asBytes`, hexadecimal
/// digits.
std::string valueWords(const BD::Tag& tag, bool asBytes = false);

} // namespace board
