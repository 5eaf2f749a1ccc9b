#include "descriptor/list/TagEntry.h"

#include <algorithm>
#include <cstdint>

#include "base/Error.h"
#include "base/Text.h"
#include "descriptor/TagWords.h"

using nlohmann::json;

namespace board {

namespace {

const std::vector<std::string> VALUE_KEYS = {"data", "hex", "text", "u8",
                                             "u16",  "u32", "uint", "mac"};

} // namespace

const std::vector<std::string>& TagEntry::keys() {
    static const std::vector<std::string> KEYS = [] {
        std::vector<std::string> keys = {"id"};
        keys.insert(keys.end(), VALUE_KEYS.begin(), VALUE_KEYS.end());
        keys.insert(keys.end(), {"iface", "length", "name", "simulated"});
        return keys;
    }();
    return KEYS;
}

const std::vector<std::string>& TagEntry::valueKeys() {
    return VALUE_KEYS;
}

BD::TagId TagEntry::id() const {
    const BD::TagId id = idAlone();
    const JsonMember* const member = m_entry.find("name");
    if (!member || !member->value.is_string())
        return id;
    const BD::TagId named = findTagId(member->value.get<std::string>()).value_or(id);
    if (named != id)
        m_entry.fail(member, "\"name\" is that of id " + std::to_string(named) + " but \"id\" is " +
                                 std::to_string(id) + " (expected \"" + tagName(id) + "\")");
    return id;
}

BD::TagId TagEntry::idAlone() const {
    constexpr char EXPECTED[] = " (expected 1 to 65534, a name, or 0 for the terminator)";
    const JsonMember* const member = m_entry.find("id");
    if (!member)
        m_entry.fail(nullptr, "has no \"id\"");
    const json& value = member->value;
    if (value.is_string()) {
        const auto word = value.get<std::string>();
        try {
            if (word.find('.') == std::string::npos)
                return parseTagPlace(word).id;
        } catch (const Error& error) {
            m_entry.fail(member, std::string("\"id\": ") + error.what());
        }
        m_entry.fail(member, "\"id\" names an occurrence; entries are counted in their order" +
                                 std::string(EXPECTED));
    }
    if (!value.is_number_integer())
        m_entry.fail(member, "\"id\" is " + shown(value) + EXPECTED);
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > 65534)
        m_entry.fail(member, "id " + value.dump() + " is out of range" + EXPECTED);
    return value.get<BD::TagId>();
}

const JsonMember& TagEntry::oneOf(const std::vector<std::string>& keys) const {
    const JsonMember* found = nullptr;
    for (const JsonMember& member : m_entry.members) {
        if (std::find(keys.begin(), keys.end(), member.key) == keys.end())
            continue;
        if (found)
            m_entry.fail(&member, "has both \"" + found->key + "\" and \"" + member.key +
                                      "\" (expected one value)");
        found = &member;
    }
    if (!found)
        m_entry.fail(nullptr, "has no value (expected " + joinChoices(keys) + ")");
    return *found;
}

BD::Tag TagEntry::tag() const {
    BD::Tag tag(id());
    const JsonMember& value = oneOf(VALUE_KEYS);
    const std::string bytes = bytesOf(value);
    if (bytes.size() > MAX_TAG_DATA)
        m_entry.fail(&value, '"' + value.key + "\" has " + std::to_string(bytes.size()) +
                                 " bytes, too long for a chunk (expected at most " +
                                 std::to_string(MAX_TAG_DATA) + ")");
    static_cast<void>(tag.setData(bytes.data(), static_cast<unsigned>(bytes.size())));
    if (value.key != "mac")
        if (const JsonMember* const interface = m_entry.find("iface"))
            m_entry.fail(interface, "\"iface\" belongs to \"mac\"");
    const JsonMember* const length = m_entry.find("length");
    if (length && (!length->value.is_number_integer() || length->value != tag.length))
        m_entry.fail(length, "\"length\" is " + shown(length->value) + " but \"" + value.key +
                                 "\" has " + std::to_string(tag.length) + " bytes");
    if (tag.id == TERMINATOR_TAG && tag.length != 0)
        m_entry.fail(&value, "id 0 is the terminator, which has no data");
    return tag;
}

void TagEntry::failAfterEnd() const {
    m_entry.fail(nullptr,
                 "comes after the terminator, so it is never read (expected the terminator "
                 "last)");
}

std::string TagEntry::text(const JsonMember& member, const char* expected) const {
    if (!member.value.is_string())
        m_entry.fail(&member, '"' + member.key + "\" is not a text (expected " + expected + ")");
    return member.value.get<std::string>();
}

unsigned TagEntry::number(const JsonMember& member, unsigned maximum) const {
    const json& value = member.value;
    if (value.is_number_unsigned() && value.get<std::uint64_t>() <= maximum)
        return value.get<unsigned>();
    try {
        if (value.is_string())
            return parseNumber(value.get<std::string>(), maximum, '"' + member.key + '"');
    } catch (const Error& error) {
        m_entry.fail(&member, error.what());
    }
    m_entry.fail(&member, '"' + member.key + "\" is " + shown(value) + " (expected 0 to " +
                              std::to_string(maximum) + ")");
}

std::string TagEntry::address(const JsonMember& member) const {
    try {
        return macBytes(parseMac(text(member, "a MAC address such as 02:00:00:00:00:07")));
    } catch (const Error& error) {
        if (!member.value.is_string())
            throw;
        m_entry.fail(&member, '"' + member.key + "\": " + error.what());
    }
}

std::optional<unsigned> TagEntry::interface() const {
    const JsonMember* const member = m_entry.find("iface");
    if (!member)
        return std::nullopt;
    return number(*member, UINT16_MAX);
}

std::string TagEntry::hex(const JsonMember& member) const {
    const std::string digits = text(member, "hexadecimal digits");
    if (digits.size() % 2 != 0)
        m_entry.fail(&member, '"' + member.key + "\" has " + std::to_string(digits.size()) +
                                  " digits, an odd number (expected two for each byte)");
    std::string bytes;
    if (const std::size_t wrong = decodeHex(digits, bytes); wrong != std::string::npos)
        m_entry.fail(&member, '"' + member.key + "\" is not hexadecimal at character " +
                                  std::to_string(wrong));
    return bytes;
}

std::string TagEntry::bytesOf(const JsonMember& member) const {
    const std::string& key = member.key;
    if (key == "text")
        return text(member, "the characters of the tag");
    if (key == "u8")
        return bigEndian(number(member, UINT8_MAX), 1);
    if (key == "u16")
        return bigEndian(number(member, UINT16_MAX), 2);
    if (key == "u32" || key == "uint")
        return bigEndian(number(member, UINT32_MAX), 4);
    if (key != "mac")
        return hex(member);
    const std::optional<unsigned> number = interface();
    if (!number)
        m_entry.fail(&member, "\"mac\" needs the number of the interface (expected \"iface\")");
    return address(member) + bigEndian(*number, 2);
}

} // namespace board
