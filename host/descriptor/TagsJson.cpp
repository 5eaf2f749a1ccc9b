#include "descriptor/TagsJson.h"

#include <set>
#include <utility>

#include <nlohmann/json.hpp>

#include "base/Error.h"
#include "base/Text.h"
#include "descriptor/TagWords.h"

using nlohmann::ordered_json;

namespace board {

namespace {

/// A value for a message; one that may be large or deeply nested is named by its type alone.
std::string shown(const ordered_json& value) {
    return value.is_number() || value.is_boolean() ? value.dump()
                                                   : std::string("of type ") + value.type_name();
}

/// One entry of the array; messages about it begin with `where`.
class Entry {
public:
    Entry(const ordered_json& json, const std::string& where) : m_json(json), m_where(where) {}

    [[noreturn]] void fail(const std::string& what) const { throw Error(m_where + ": " + what); }

    void checkShape() const {
        if (!m_json.is_object())
            fail("is " + shown(m_json) + " (expected an object with \"id\" and \"data\")");
        for (const auto& item : m_json.items())
            if (item.key() != "id" && item.key() != "name" && item.key() != "length" &&
                item.key() != "data" && item.key() != "simulated")
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
        if (size > MAX_TAG_DATA)
            fail("\"data\" has " + std::to_string(size) +
                 " bytes, too long for a chunk (expected at most " + std::to_string(MAX_TAG_DATA) +
                 ")");
        std::string bytes;
        if (const std::size_t wrong = decodeHex(digits, bytes); wrong != std::string::npos)
            fail("\"data\" is not hexadecimal at character " + std::to_string(wrong));
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

    const ordered_json& m_json;
    const std::string m_where;
};

ordered_json parse(const std::string& text, const std::string& source) {
    const auto zero = text.find('\0');
    if (zero != std::string::npos)
        throw Error(source + ": holds a zero byte at " + std::to_string(zero) + " (expected JSON)");
    // If a key occurs twice, the parser silently keeps one of the values.
    std::vector<std::set<std::string>> keys;
    const auto refuseTwice = [&](int, ordered_json::parse_event_t event,
                                 const ordered_json& parsed) {
        if (event == ordered_json::parse_event_t::object_start)
            keys.emplace_back();
        else if (event == ordered_json::parse_event_t::object_end)
            keys.pop_back();
        else if (event == ordered_json::parse_event_t::key &&
                 !keys.back().insert(parsed.get<std::string>()).second)
            throw Error(source + ": the key " + parsed.dump() + " occurs twice in one entry");
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

std::string tagsToJson(const TagImage& image, bool isSimulated) {
    std::vector<std::string> entries;
    const auto add = [&](const BD::Tag& tag) {
        ordered_json entry = {{"id", tag.id},
                              {"name", tagName(tag.id)},
                              {"length", tag.length},
                              {"data", hexDigits(tag)}};
        if (isSimulated)
            entry["simulated"] = true;
        entries.push_back("\n" + entry.dump());
    };
    for (const ImageTag& each : image.tags())
        add(each.tag);
    if (image.terminator())
        add(BD::Tag(TERMINATOR_TAG));
    return "[" + join(entries, ",") + "\n]\n";
}

std::vector<BD::Tag> tagsFromJson(const std::string& text, const std::string& source) {
    const ordered_json json = parse(text, source);
    if (!json.is_array())
        throw Error(source +
                    ": is not an array (expected [{\"id\":45,\"data\":\"1234abcd\"}, ...])");
    std::vector<BD::Tag> tags;
    for (const ordered_json& element : json) {
        const Entry entry(element, source + ": entry " + std::to_string(tags.size()));
        entry.checkShape();
        BD::Tag tag(entry.id());
        static_cast<void>(tag.setData(entry.data())); // always succeeds
        entry.checkLength(tag.length);
        if (tag.id == TERMINATOR_TAG && tag.length != 0)
            entry.fail("id 0 is the terminator, which has no data");
        tags.push_back(std::move(tag));
    }
    return tags;
}

} // namespace board
