#include "descriptor/TagsJson.h"

#include <set>
#include <vector>

#include <nlohmann/json.hpp>

#include "base/Error.h"
#include "descriptor/TagWords.h"

using nlohmann::ordered_json;

namespace board {

namespace {

// What a chunk's 16-bit length leaves beside its header and the byte that the writer adds to an odd
// length.
constexpr std::size_t MAX_DATA_BYTES = 65530;

/// A value for a message; what may be large or deeply nested is named by its type alone.
std::string shown(const ordered_json& value) {
    return value.is_number() || value.is_boolean() ? value.dump()
                                                   : std::string("of type ") + value.type_name();
}

/// One entry of the array, with the words for saying what is wrong in it.
class Entry {
public:
    Entry(const ordered_json& json, const std::string& where) : m_json(json), m_where(where) {}

    [[noreturn]] void fail(const std::string& what) const { throw Error(m_where + ": " + what); }

    void checkShape() const {
        if (!m_json.is_object())
            fail("is " + shown(m_json) + " (expected an object with \"id\" and \"data\")");
        for (const auto& item : m_json.items())
            if (item.key() != "id" && item.key() != "name" && item.key() != "length" &&
                item.key() != "data")
                fail("unknown key \"" + item.key() + "\" (expected id, name, length, data)");
    }

    BD::TagId id() const {
        constexpr char EXPECTED[] = " (expected 1 to 65534, or 0 for the terminator)";
        const ordered_json& value = member("id");
        if (!value.is_number_integer())
            fail("\"id\" is " + shown(value) + EXPECTED);
        const bool fits = value.is_number_unsigned() && value.get<std::uint64_t>() <= 65534;
        if (!fits)
            fail("id " + value.dump() + " is out of range" + EXPECTED);
        return value.get<BD::TagId>();
    }

    TString<char> data() const {
        const ordered_json& value = member("data");
        if (!value.is_string())
            fail("\"data\" is not a text (expected hexadecimal digits)");
        const std::string digits = value.get<std::string>();
        if (digits.size() % 2 != 0)
            fail("\"data\" has " + std::to_string(digits.size()) +
                 " digits, an odd number (expected two for each byte)");
        const auto size = digits.size() / 2;
        if (size > MAX_DATA_BYTES)
            fail("\"data\" has " + std::to_string(size) +
                 " bytes, too long for a chunk (expected at most " +
                 std::to_string(MAX_DATA_BYTES) + ")");
        std::string bytes;
        for (std::size_t i = 0; i < digits.size(); i += 2)
            bytes += static_cast<char>(digit(digits[i], i) * 16 + digit(digits[i + 1], i + 1));
        return TString<char>(bytes.data(), static_cast<unsigned>(bytes.size()));
    }

    void checkLength(unsigned bytes) const {
        const auto length = m_json.find("length");
        if (length != m_json.end() && (!length->is_number_integer() || *length != bytes))
            fail("\"length\" is " + shown(*length) + " but \"data\" has " + std::to_string(bytes) +
                 " bytes");
    }

private:
    const ordered_json& member(const char* key) const {
        const auto found = m_json.find(key);
        if (found == m_json.end())
            fail(std::string("has no \"") + key + "\"");
        return *found;
    }

    int digit(char c, std::size_t position) const {
        const int value = digitOf(c);
        if (value >= 0)
            return value;
        fail("\"data\" is not hexadecimal at character " + std::to_string(position));
    }

    const ordered_json& m_json;
    const std::string m_where;
};

ordered_json parse(const std::string& text, const std::string& source) {
    const auto zero = text.find('\0');
    if (zero != std::string::npos)
        throw Error(source + ": holds a zero byte at " + std::to_string(zero) + " (expected JSON)");
    // Of two values under one key the parser would keep one without a word.
    std::vector<std::set<std::string>> keys;
    const auto refuseTwice = [&](int, ordered_json::parse_event_t event,
                                 const ordered_json& parsed) {
        if (event == ordered_json::parse_event_t::object_start)
            keys.emplace_back();
        else if (event == ordered_json::parse_event_t::object_end)
            keys.pop_back();
        else if (event == ordered_json::parse_event_t::key &&
                 !keys.back().insert(parsed.get<std::string>()).second)
            throw Error(source + ": the key " + parsed.dump() + " stands twice in one entry");
        return true;
    };
    try {
        return ordered_json::parse(text, refuseTwice);
    } catch (const ordered_json::exception& error) {
        const std::string what = error.what(); // "[its own name for it] parse error at line ..."
        const auto start = what.find("] ");
        throw Error(source + ": " + (start == std::string::npos ? what : what.substr(start + 2)));
    }
}

} // namespace

std::string tagsToJson(const CBoardDescr::TagList& tags) {
    std::string text = "[";
    const char* separator = "\n";
    for (const BD::Tag& tag : tags) {
        const ordered_json entry = {{"id", tag.id},
                                    {"name", BD::TAG_ID_TO_STRING(tag.id).c_str()},
                                    {"length", tag.length},
                                    {"data", hexDigits(tag)}};
        text += separator + entry.dump();
        separator = ",\n";
    }
    return text + "\n]\n";
}

void tagsFromJson(const std::string& text, const std::string& source, CBoardDescr& descriptor) {
    const ordered_json json = parse(text, source);
    if (!json.is_array())
        throw Error(source +
                    ": is not an array (expected [{\"id\":45,\"data\":\"1234abcd\"}, ...])");
    std::size_t number = 0;
    for (const ordered_json& element : json) {
        const Entry entry(element, source + ": entry " + std::to_string(number++));
        entry.checkShape();
        const BD::TagId id = entry.id();
        const TString<char> data = entry.data();
        entry.checkLength(data.length());
        if (id == 0 && data.length() != 0)
            entry.fail("id 0 is the terminator, which carries no data");
        static_cast<void>(descriptor.addTag(id, data)); // always succeeds
    }
}

} // namespace board
