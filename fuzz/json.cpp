// Reads arbitrary text as JSON tags: the result is either an Error, or tags that survive being
// built into an image and dumped. Then derives tags from the same bytes and writes them as JSON,
// with or without a mistake: the text must be accepted exactly if it has no mistake. Entries after
// the terminator are a mistake, unless the reader is told to keep them.

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "Entry.h"
#include "Oracle.h"
#include "base/Error.h"
#include "descriptor/TagsJson.h"

using fuzz::Entry;
using fuzz::expect;

namespace {

std::vector<Entry> entriesOf(const std::vector<BD::Tag>& tags) {
    std::vector<Entry> entries;
    for (const BD::Tag& tag : tags) {
        expect(tag.length == tag.data.length(), "a tag's length is that of its data");
        entries.push_back({tag.id, std::string(tag.data.data(), tag.data.length())});
    }
    return entries;
}

/// What must be loaded from an image of `entries`: those up to the terminator, padded to even
/// lengths.
std::vector<Entry> loaded(const std::vector<Entry>& entries) {
    std::vector<Entry> good;
    for (const Entry& entry : entries) {
        good.push_back({entry.id, entry.data + std::string(entry.data.size() % 2, '\0')});
        if (entry.id == 0)
            break;
    }
    return good;
}

/// Returns whether `text` is accepted. If so, stores its entries in `entries`.
bool reads(const std::string& text, std::vector<Entry>& entries, board::TagsAfterEnd afterEnd) {
    std::vector<BD::Tag> tags;
    try {
        tags = board::tagsFromJson(text, "tags.json", afterEnd);
    } catch (const board::Error& error) {
        expect(std::string(error.what()).rfind("tags.json:", 0) == 0, "an error names its source");
        return false;
    }
    entries = entriesOf(tags);
    for (const Entry& entry : entries) {
        expect(entry.id >= 0 && entry.id <= 65534, "identifiers are 0 to 65534");
        expect(entry.id != 0 || entry.data.empty(), "a terminator has no data");
        expect(entry.data.size() <= 65530, "data fits a chunk");
    }
    const board::TagImage image(board::imageOf(tags));
    expect(!image.isCorrupt(), "what is built loads");
    const std::vector<BD::Tag> dumped = board::tagsFromJson(board::tagsToJson(image), "dump");
    expect(entriesOf(dumped) == loaded(entries), "what was built is dumped");
    return true;
}

std::string hexDigits(const std::string& data, const char* digits) {
    std::string text;
    for (const char c : data)
        text += {digits[static_cast<unsigned char>(c) >> 4],
                 digits[static_cast<unsigned char>(c) & 15]};
    return text;
}

/// The data as a member with the type that its length suggests.
std::string typed(const std::string& bytes) {
    const auto number = [&bytes] {
        unsigned value = 0;
        for (const char c : bytes)
            value = value << 8 | static_cast<unsigned char>(c);
        return std::to_string(value);
    };
    if (bytes.size() == 1)
        return "\"u8\":" + number();
    if (bytes.size() == 2)
        return "\"u16\":\"" + number() + '"';
    if (bytes.size() == 4)
        return "\"uint\":" + number();
    if (bytes.find_first_of("\"\\") == std::string::npos &&
        std::all_of(bytes.begin(), bytes.end(), [](char c) { return c >= ' ' && c <= '~'; }))
        return "\"text\":\"" + bytes + '"';
    return "\"hex\":\"" + hexDigits(bytes, "0123456789abcdef") + '"';
}

enum class Mistake {
    NONE,
    LENGTH,
    ODD,
    NO_DIGIT,
    ID_TOO_LARGE,
    TERMINATOR_WITH_DATA,
    ID_TEXT,
    NO_DATA,
    TWICE,
    FOREIGN_KEY,
    COUNT
};

/// The JSON text of an entry, with the blanks, optional keys and letter case that people may use.
std::string written(const Entry& entry, FuzzedDataProvider& data, Mistake mistake) {
    const char* const blank = data.PickValueInArray({"", " ", "\n\t"});
    std::string id = std::to_string(mistake == Mistake::ID_TOO_LARGE ? 65535 : entry.id);
    if (mistake == Mistake::ID_TEXT)
        id = '"' + id + ".0\"";
    else if (entry.id != 0 && data.ConsumeBool())
        id = '"' + id + '"';
    std::string digits =
        hexDigits(entry.data, data.ConsumeBool() ? "0123456789abcdef" : "0123456789ABCDEF");
    if (mistake == Mistake::TERMINATOR_WITH_DATA) {
        id = "0";
        digits += "00";
    }
    if (mistake == Mistake::ODD)
        digits += "0";
    if (mistake == Mistake::NO_DIGIT)
        digits += "0g";
    std::vector<std::string> members = {"\"id\":" + id};
    if (mistake != Mistake::NO_DATA)
        members.push_back(mistake == Mistake::NONE && data.ConsumeBool()
                              ? typed(entry.data)
                              : "\"data\": \"" + digits + '"');
    if (data.ConsumeBool() || mistake == Mistake::LENGTH)
        members.push_back("\"length\" :" +
                          std::to_string(digits.size() / 2 + (mistake == Mistake::LENGTH ? 1 : 0)));
    if (data.ConsumeBool())
        members.push_back("\"name\":\"\\u00e9\"");
    if (mistake == Mistake::TWICE)
        members.push_back(members.back());
    if (mistake == Mistake::FOREIGN_KEY)
        members.push_back("\"value\":1");
    if (data.ConsumeBool())
        std::reverse(members.begin(), members.end());
    std::string text = "{";
    for (const std::string& member : members)
        text += (text.size() > 1 ? "," : "") + (blank + member) + blank;
    return text + "}";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    std::vector<Entry> read;
    reads(fuzz::textOf(bytes, size), read, board::TagsAfterEnd::KEPT);

    FuzzedDataProvider data(bytes, size);
    const auto mistake = data.ConsumeBool() ? Mistake::NONE
                                            : static_cast<Mistake>(data.ConsumeIntegralInRange(
                                                  1, static_cast<int>(Mistake::COUNT) - 1));
    const auto count = data.ConsumeIntegralInRange<std::size_t>(1, 8);
    const auto wrong = data.ConsumeIntegralInRange<std::size_t>(0, count - 1);
    std::vector<Entry> entries;
    std::string text = "[";
    for (std::size_t i = 0; i < count; ++i) {
        Entry entry{data.ConsumeIntegralInRange(0, 65534), data.ConsumeRandomLengthString(20)};
        if (entry.id == 0)
            entry.data.clear();
        text += (i > 0 ? "," : "") + written(entry, data, i == wrong ? mistake : Mistake::NONE);
        entries.push_back(entry);
    }
    const auto afterEnd =
        data.ConsumeBool() ? board::TagsAfterEnd::KEPT : board::TagsAfterEnd::REFUSED;
    const auto end = std::find_if(entries.begin(), entries.end(),
                                  [](const Entry& entry) { return entry.id == 0; });
    const bool endsWell = afterEnd == board::TagsAfterEnd::KEPT || end == entries.end() ||
                          std::next(end) == entries.end();
    const bool isRight = mistake == Mistake::NONE && endsWell;
    expect(reads(text + "]", read, afterEnd) == isRight, "one mistake is enough to be rejected");
    if (isRight)
        expect(read == entries, "entries without one are read as written");
    return 0;
}
