#include "descriptor/compare/ExpectedTag.h"

#include <utility>

#include "BD_TagMeaning.h"
#include "base/Text.h"
#include "descriptor/TagWords.h"

namespace board {

namespace {

constexpr std::size_t ADDRESS_BYTES = 6;
constexpr unsigned LONGEST_SHOWN = 64;

BD::Tag tagOf(BD::TagId id, const TString<char>& data) {
    BD::Tag tag(id);
    static_cast<void>(tag.setData(data)); // always succeeds
    return tag;
}

std::string colons(const std::string& address) {
    const TString<char> bytes(address.data(), static_cast<unsigned>(address.size()));
    std::string digits = hexDigits(tagOf(MAC_TAG, bytes));
    for (std::size_t i = 2; i < digits.size(); i += 3)
        digits.insert(i, ":");
    return digits;
}

/// `Meets` tells whether a tag has an expected value; `Words` describes the value.
struct Meets {
    const BD::Tag& tag;

    bool operator()(const TString<char>& data) const { return asLoaded(tag).data == data; }
    bool operator()(const AnyValue&) const { return true; }
    bool operator()(const DataSize& size) const {
        return tag.length == size.bytes || tag.length == size.bytes + size.bytes % 2;
    }
    bool operator()(const TextPattern& pattern) const { return pattern.matches(textOf(tag)); }
    bool operator()(const AddressRange& range) const {
        const auto found = macOf(tag);
        const std::string address = found ? std::string(tag.data.data(), ADDRESS_BYTES) : "";
        return found && range.first <= address && address <= range.last &&
               (!range.interface || found->interface == *range.interface);
    }
};

struct Words {
    BD::TagId id;

    std::string operator()(const TString<char>& data) const { return valueWords(tagOf(id, data)); }
    std::string operator()(const AnyValue&) const { return "any value"; }
    std::string operator()(const DataSize& size) const {
        return std::to_string(size.bytes) + (size.bytes == 1 ? " byte" : " bytes");
    }
    std::string operator()(const TextPattern& pattern) const {
        return "a text that matches \"" + printable(pattern.expression()) + '"';
    }
    std::string operator()(const AddressRange& range) const {
        return "an address from " + colons(range.first) + " to " + colons(range.last) +
               (range.interface ? " of interface " + std::to_string(*range.interface) : "");
    }
};

} // namespace

ExpectedTag::ExpectedTag(BD::TagId id, Value value) : m_id(id), m_value(std::move(value)) {}

ExpectedTag::ExpectedTag(const BD::Tag& tag) : m_id(tag.id), m_value(asLoaded(tag).data) {}

bool ExpectedTag::isMetBy(const BD::Tag& tag) const {
    return std::visit(Meets{tag}, m_value);
}

std::string ExpectedTag::words() const {
    return std::visit(Words{m_id}, m_value);
}

std::string valueWords(const BD::Tag& tag, bool asBytes) {
    if (tag.length == 0)
        return "no data";
    const BD::TagMeaning meaning = BD::meaningOf(tag.id);
    const bool isWhole = meaning.size == 0 || meaning.size == tag.length;
    if (!asBytes && isWhole) {
        if (meaning.kind == BD::TagKind::MAC)
            if (const auto address = macOf(tag))
                return address->mac + "/" + std::to_string(address->interface);
        if (meaning.kind == BD::TagKind::NUMBER)
            return std::to_string(tag.getDataUInt());
        const std::string text = textOf(tag);
        const bool isText =
            meaning.kind == BD::TagKind::TEXT || meaning.kind == BD::TagKind::UPPER_TEXT;
        if (isText && text.size() <= LONGEST_SHOWN && printable(text) == text)
            return '"' + text + '"';
    }
    if (tag.length <= LONGEST_SHOWN)
        return hexDigits(tag);
    return hexDigits(tagOf(tag.id, tag.data.substring(0, LONGEST_SHOWN))) + "... (" +
           std::to_string(tag.length) + " bytes)";
}

} // namespace board
