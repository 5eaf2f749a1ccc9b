#pragma once

#include <optional>
#include <string>
#include <variant>

#include "descriptor/TagImage.h"
#include "descriptor/compare/TextPattern.h"

namespace board {

struct AnyValue {};

/// Data of this many bytes; data of odd size is loaded with a padding byte.
struct DataSize {
    std::size_t bytes;
};

/// A MAC address from `first` to `last`, six bytes each; `interface`, if given, must be its
/// interface.
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
    /// Expects the data of `tag`; data of odd size matches with and without a padding byte.
    explicit ExpectedTag(const BD::Tag& tag);

    BD::TagId id() const { return m_id; }

    /// The data as it is loaded; null for a pattern.
    const TString<char>* data() const { return std::get_if<TString<char>>(&m_value); }

    /// Whether `tag` has the expected data. Its identifier must be `id()`.
    bool isMetBy(const BD::Tag& tag) const;

    /// What is expected, in words: `valueWords` of exact data, or the pattern, such as "4 bytes".
    std::string words() const;

private:
    BD::TagId m_id;
    Value m_value;
};

/// The data of a tag for people. Depending on the tag's meaning, it is an address with its
/// interface, a text in quotes, a decimal number, or hexadecimal digits; if `asBytes`, always
/// hexadecimal digits. Long data is cut.
std::string valueWords(const BD::Tag& tag, bool asBytes = false);

} // namespace board
