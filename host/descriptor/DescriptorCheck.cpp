#include "descriptor/DescriptorCheck.h"

#include <algorithm>
#include <map>

#include "BD_TagMeaning.h"
#include "descriptor/TagWords.h"

namespace board {

namespace {

bool isBlank(char c) {
    return c == '\0' || c == '\xFF';
}

class Checker {
public:
    Checker(const TagImage& image, bool isDevice) : m_image(image), m_isDevice(isDevice) {}

    std::vector<Finding> check() {
        for (const ImageTag& tag : m_image.tags())
            checkTag(tag);
        if (const auto& fault = m_image.fault())
            add(Finding::Weight::CORRUPT, m_image.usedBytes(), *fault);
        else if (m_image.terminator())
            checkRest();
        else
            addMissingTerminator();
        return std::move(m_findings);
    }

private:
    void add(Finding::Weight weight, std::size_t offset, const std::string& text) {
        m_findings.push_back({weight, offset, text});
    }

    void checkTag(const ImageTag& checked) {
        const BD::Tag& tag = checked.tag;
        const auto warn = [&](const std::string& text) {
            add(Finding::Weight::WARNING, checked.offset, tagName(tag.id) + ": " + text);
        };
        if (const auto size = wrongSizeOf(tag))
            warn("has " + *size);
        if (tag.length % 2 != 0)
            warn("has an odd length of " + std::to_string(tag.length) +
                 "; storing and loading it adds a zero byte");
        const auto [former, isFirst] = m_firstOf.emplace(tag.id, checked.offset);
        if (!isFirst && BD::meaningOf(tag.id).isSingle)
            warn("is also at " + std::to_string(former->second) + " (expected one)");
    }

    void addMissingTerminator() {
        const std::size_t end = m_image.usedBytes();
        const bool hasStrayByte = end < m_image.bytes().size();
        add(Finding::Weight::WARNING, end,
            std::string("the image ends ") + (hasStrayByte ? "with a single byte and " : "") +
                "without a terminator (expected 00 00 00 04)");
    }

    void checkRest() {
        const std::size_t start = m_image.restOffset();
        const std::string rest = m_image.bytes().substr(start);
        const auto stray = std::find_if_not(rest.begin(), rest.end(), isBlank);
        if (stray == rest.end())
            return;
        const auto weight = m_isDevice ? Finding::Weight::NOTE : Finding::Weight::WARNING;
        const TagImage left(rest);
        const std::size_t tags = left.tags().size();
        if (tags > 0)
            add(weight, start,
                std::to_string(tags) + (tags == 1 ? " tag" : " tags") +
                    " after the terminator, from " + tagName(left.tags().front().tag.id) +
                    " on; no load reads them");
        else
            add(weight, start + static_cast<std::size_t>(stray - rest.begin()),
                "bytes after the terminator that are neither 0x00 nor 0xFF");
    }

    const TagImage& m_image;
    const bool m_isDevice;
    std::map<BD::TagId, std::size_t> m_firstOf;
    std::vector<Finding> m_findings;
};

} // namespace

std::optional<std::string> wrongSizeOf(const BD::Tag& tag) {
    const unsigned expected = BD::meaningOf(tag.id).size;
    if (expected == 0 || expected == tag.length)
        return std::nullopt;
    return std::to_string(tag.length) + (tag.length == 1 ? " byte" : " bytes") + " (expected " +
           std::to_string(expected) + ")";
}

std::vector<Finding> checkImage(const TagImage& image, bool isDevice) {
    return Checker(image, isDevice).check();
}

} // namespace board
