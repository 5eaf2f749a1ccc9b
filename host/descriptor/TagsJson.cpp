#include "descriptor/TagsJson.h"

#include <nlohmann/json.hpp>

#include "base/Text.h"
#include "descriptor/TagWords.h"
#include "descriptor/list/TagEntry.h"

using nlohmann::ordered_json;

namespace board {

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

std::vector<BD::Tag> tagsFromJson(const std::string& text, const std::string& source,
                                  TagsAfterEnd afterEnd) {
    std::vector<BD::Tag> tags;
    bool isEnded = false;
    std::size_t size = 0;
    readEntries(text, source, TagEntry::keys(), [&](const JsonEntry& entry) {
        if (isEnded && afterEnd == TagsAfterEnd::REFUSED)
            TagEntry(entry).failAfterEnd();
        tags.push_back(TagEntry(entry).tag());
        size += imageOf({tags.back()}).size();
        if (size > MAX_IMAGE_SIZE)
            entry.fail(nullptr, "makes an image of " + std::to_string(size) +
                                    " bytes (expected at most " + std::to_string(MAX_IMAGE_SIZE) +
                                    ")");
        isEnded = isEnded || tags.back().id == TERMINATOR_TAG;
    });
    return tags;
}

} // namespace board
