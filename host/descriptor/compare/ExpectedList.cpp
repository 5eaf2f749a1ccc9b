#include "descriptor/compare/ExpectedList.h"

#include <utility>

#include "base/Error.h"
#include "descriptor/list/TagEntry.h"

namespace board {

namespace {

const std::vector<std::string> PATTERN_KEYS = {"any", "size", "matches", "from"};

/// An entry with a value or a pattern.
class ExpectedEntry {
public:
    explicit ExpectedEntry(const JsonEntry& json) : m_json(json), m_entry(json) {}

    ExpectedTag tag() const {
        const JsonMember* const to = m_json.find("to");
        if (to && !m_json.find("from"))
            m_json.fail(to, "\"to\" needs the first address (expected \"from\")");
        for (const std::string& key : PATTERN_KEYS)
            if (m_json.find(key))
                return pattern();
        return ExpectedTag(m_entry.tag());
    }

private:
    ExpectedTag pattern() const {
        const BD::TagId id = m_entry.id();
        // An entry can't have both a pattern and a value.
        std::vector<std::string> keys = PATTERN_KEYS;
        keys.insert(keys.end(), TagEntry::valueKeys().begin(), TagEntry::valueKeys().end());
        const JsonMember& member = m_entry.oneOf(keys);
        if (id == TERMINATOR_TAG)
            m_json.fail(&member, "id 0 is the terminator, which has no data");
        const JsonMember* const interface = m_json.find("iface");
        if (interface && member.key != "from")
            m_json.fail(interface, "\"iface\" belongs to \"mac\" or \"from\"");
        return {id, valueOf(member)};
    }

    ExpectedTag::Value valueOf(const JsonMember& member) const {
        if (member.key == "any") {
            if (member.value != true)
                m_json.fail(&member, "\"any\" is " + shown(member.value) + " (expected true)");
            return AnyValue{};
        }
        if (member.key == "size")
            return DataSize{m_entry.number(member, MAX_TAG_DATA)};
        if (member.key == "from")
            return range(member);
        try {
            return TextPattern(m_entry.text(member, "a regular expression"));
        } catch (const Error& error) {
            if (!member.value.is_string())
                throw;
            m_json.fail(&member, "\"matches\": " + std::string(error.what()));
        }
    }

    AddressRange range(const JsonMember& from) const {
        const JsonMember* const to = m_json.find("to");
        if (!to)
            m_json.fail(&from, "\"from\" needs the last address (expected \"to\")");
        AddressRange range{m_entry.address(from), m_entry.address(*to), m_entry.interface()};
        if (range.last < range.first)
            m_json.fail(to, "\"to\" is lower than \"from\"");
        return range;
    }

    const JsonEntry& m_json;
    const TagEntry m_entry;
};

ExpectedList ofJson(const std::string& text, const std::string& source) {
    std::vector<std::string> keys = TagEntry::keys();
    keys.insert(keys.end(), PATTERN_KEYS.begin(), PATTERN_KEYS.end());
    keys.emplace_back("to");
    ExpectedList list;
    bool isEnded = false;
    readEntries(text, source, keys, [&](const JsonEntry& entry) {
        if (isEnded)
            TagEntry(entry).failAfterEnd();
        ExpectedTag tag = ExpectedEntry(entry).tag();
        isEnded = tag.id() == TERMINATOR_TAG;
        if (!isEnded)
            list.tags.push_back(std::move(tag));
    });
    return list;
}

} // namespace

bool isJsonList(const std::string& bytes) {
    return !bytes.empty() && bytes.front() != '\xFF' && bytes.find('\0') == std::string::npos;
}

ExpectedList readExpected(const std::string& bytes, const std::string& source) {
    // If the list comes through a pipe, the command that should have printed it may have failed.
    // Taken as a list without tags, the empty input would match an erased unit.
    if (bytes.empty())
        throw Error(source + ": is empty (expected an image or a JSON list of tags)");
    if (isJsonList(bytes))
        return ofJson(bytes, source);
    if (bytes.size() > MAX_IMAGE_SIZE)
        throw Error(source + ": has " + std::to_string(bytes.size()) +
                    " bytes (expected an image of at most " + std::to_string(MAX_IMAGE_SIZE) + ")");
    const TagImage image(bytes);
    if (image.fault())
        throw Error(source + ": " + *image.fault() + " (expected a good image)");
    ExpectedList list;
    list.needsTerminator = image.terminator().has_value();
    list.tags.reserve(image.tags().size());
    for (const ImageTag& each : image.tags())
        list.tags.emplace_back(each.tag);
    return list;
}

} // namespace board
