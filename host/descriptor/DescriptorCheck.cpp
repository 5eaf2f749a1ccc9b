#include "descriptor/DescriptorCheck.h"

#include <algorithm>
#include <string>
#include <unordered_map>

#include "BD_TagMeaning.h"

namespace board {

namespace {

bool isBlank(char c) {
    return c == '\0' || c == '\xFF';
}

/// "all 512 bytes are 0xFF" if an image consists of one blank byte repeated, so that it holds no
/// tags; otherwise empty.
std::string blankness(const std::string& bytes) {
    constexpr std::size_t LEAST = 4; // a whole terminator
    const bool isBlankOnly = bytes.size() >= LEAST && isBlank(bytes.front()) &&
                             bytes.find_first_not_of(bytes.front()) == std::string::npos;
    if (!isBlankOnly)
        return "";
    return "all " + std::to_string(bytes.size()) +
           (bytes.front() == '\0' ? " bytes are 0x00" : " bytes are 0xFF");
}

class Checker {
public:
    Checker(const TagImage& image, bool isDevice, const std::vector<TagPlace>& required)
        : m_image(image), m_isDevice(isDevice), m_required(required) {}

    std::vector<Finding> check() {
        for (const ImageTag& tag : m_image.tags())
            checkTag(tag);
        for (const TagPlace& place : m_required)
            checkRequired(place);
        const std::string blank = blankness(m_image.bytes());
        if (const auto& fault = m_image.fault())
            addFault(*fault);
        else if (!blank.empty())
            add(Finding::Weight::BLANK, 0,
                std::string(m_isDevice ? "the device is " : "the image is ") +
                    (m_image.bytes().front() == '\0' ? "zeroed: " : "erased: ") + blank);
        else if (m_image.terminator())
            checkEnd();
        else
            addMissingTerminator();
        return std::move(m_findings);
    }

private:
    void add(Finding::Weight weight, std::size_t offset, const std::string& text) {
        m_findings.push_back({weight, offset, text});
    }

    void warn(const ImageTag& checked, const std::string& text) {
        add(Finding::Weight::WARNING, checked.offset, tagName(checked.tag.id) + ": " + text);
    }

    void checkTag(const ImageTag& checked) {
        const BD::Tag& tag = checked.tag;
        if (const auto size = wrongSizeOf(tag))
            warn(checked, "has " + *size);
        if (tag.length % 2 != 0)
            warn(checked, "has an odd length of " + std::to_string(tag.length) +
                              "; storing and loading it adds a zero byte");
        std::vector<const ImageTag*>& alike = m_tagsOf[tag.id];
        alike.push_back(&checked);
        const BD::TagMeaning meaning = BD::meaningOf(tag.id);
        if (alike.size() > 1 && meaning.isSingle)
            warn(checked,
                 "is also at " + std::to_string(alike.front()->offset) + " (expected one)");
        if (meaning.kind == BD::TagKind::MAC && tag.length == meaning.size)
            checkAddress(checked);
    }

    void checkAddress(const ImageTag& checked) {
        const auto address = macOf(checked.tag);
        if (const auto fault = faultOfAddress(address->mac))
            warn(checked, address->mac + " " + *fault);
        const auto [same, isNew] = m_addresses.emplace(address->mac, checked.offset);
        const auto [former, isFirst] = m_interfaces.emplace(address->interface, checked.offset);
        if (!isNew)
            warn(checked, address->mac + " is also at " + std::to_string(same->second) +
                              " (expected each address once)");
        else if (!isFirst)
            warn(checked, "interface " + std::to_string(address->interface) +
                              " has another address at " + std::to_string(former->second) +
                              " (expected one)");
    }

    void checkRequired(const TagPlace& place) {
        const auto found = m_tagsOf.find(place.id);
        const std::string name =
            tagName(place.id) + (place.index > 0 ? "." + std::to_string(place.index) : "");
        if (found == m_tagsOf.end() || place.index >= found->second.size())
            add(Finding::Weight::WARNING, m_image.usedBytes(), name + ": is missing (required)");
        else if (const ImageTag& tag = *found->second[place.index]; tag.tag.length == 0)
            add(Finding::Weight::WARNING, tag.offset, name + ": is empty (required)");
    }

    /// Reports the fault and the bytes there, because they are often the rest of an older image.
    void addFault(const std::string& fault) {
        constexpr std::size_t MOST_SHOWN = 16;
        const std::size_t start = m_image.usedBytes();
        add(Finding::Weight::CORRUPT, start, fault);
        const std::size_t size = m_image.bytes().size() - start;
        BD::Tag rest;
        static_cast<void>(rest.setData(m_image.bytes().data() + start, // always succeeds
                                       static_cast<unsigned>(std::min(size, MOST_SHOWN))));
        add(Finding::Weight::NOTE, start,
            "no terminator comes before this; " + std::to_string(size) +
                " bytes are left: " + hexDigits(rest) + (size > MOST_SHOWN ? "..." : ""));
    }

    void addMissingTerminator() {
        const std::size_t end = m_image.usedBytes();
        const bool hasStrayByte = end < m_image.bytes().size();
        add(Finding::Weight::WARNING, end,
            std::string("the image ends ") + (hasStrayByte ? "with a single byte and " : "") +
                "without a terminator (expected 00 00 00 04); written to a used device, the rest "
                "of its old image would follow");
    }

    void checkEnd() {
        const std::size_t end = *m_image.terminator();
        if (m_image.bytes()[end] == '\xFF')
            add(Finding::Weight::NOTE, end,
                "the tags end at erased bytes, without a terminator (expected 00 00 00 04)");
        checkRest();
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
    const std::vector<TagPlace>& m_required;
    std::unordered_map<BD::TagId, std::vector<const ImageTag*>> m_tagsOf;
    std::unordered_map<std::string, std::size_t> m_addresses; ///< where each first occurs
    std::unordered_map<unsigned, std::size_t> m_interfaces;   ///< where each number first occurs
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

std::vector<Finding> checkImage(const TagImage& image, bool isDevice,
                                const std::vector<TagPlace>& required) {
    std::vector<Finding> findings = Checker(image, isDevice, required).check();
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.offset < b.offset; });
    return findings;
}

} // namespace board
