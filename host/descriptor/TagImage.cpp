#include "descriptor/TagImage.h"

#include <algorithm>
#include <utility>

#include "base/Error.h"
#include "descriptor/TagWords.h"

namespace board {

namespace {

constexpr std::size_t HEADER_BYTES = 4;
constexpr std::size_t ID_BYTES = 2;

/// The number of bytes that the chunk of a loaded tag occupies.
std::size_t chunkSize(const BD::Tag& tag) {
    return HEADER_BYTES + tag.length;
}

} // namespace

TagImage::TagImage(std::string bytes) : m_bytes(std::move(bytes)) {
    CBoardDescr descriptor;
    String error;
    if (!descriptor.importBD({m_bytes.data(), static_cast<unsigned>(m_bytes.size())}, error)
             .isSuccess())
        m_fault = error.c_str();
    m_tags.reserve(descriptor.getTags().size());
    for (const BD::Tag& tag : descriptor.getTags()) {
        if (tag.id == TERMINATOR_TAG) {
            m_terminator = m_tagBytes;
            break;
        }
        m_tags.push_back({tag, m_tagBytes});
        m_tagBytes += chunkSize(tag);
    }
}

std::size_t TagImage::usedBytes() const {
    return m_terminator ? std::min(*m_terminator + HEADER_BYTES, m_bytes.size()) : m_tagBytes;
}

std::size_t TagImage::restOffset() const {
    if (!m_terminator)
        return m_bytes.size();
    const std::string whole = imageOf({BD::Tag(TERMINATOR_TAG)});
    const bool isWhole = m_bytes.compare(*m_terminator, whole.size(), whole) == 0;
    return *m_terminator + (isWhole ? whole.size() : ID_BYTES);
}

std::string TagImage::chunkOf(const ImageTag& tag) const {
    return m_bytes.substr(tag.offset, chunkSize(tag.tag));
}

const BD::Tag& TagImage::find(BD::TagId id, unsigned index) const {
    for (const ImageTag& each : m_tags)
        if (each.tag.id == id && index-- == 0)
            return each.tag;
    throw Error(missingTag(id));
}

void TagImage::loadInto(CBoardDescr& descriptor) const {
    String fault; // m_fault holds it already
    static_cast<void>(
        descriptor.importBD({m_bytes.data(), static_cast<unsigned>(m_bytes.size())}, fault));
}

std::string missingTag(BD::TagId id) {
    return String::format(CBoardDescr::ERR_TAG_NOT_FOUND, id, tagName(id).c_str()).c_str();
}

BD::Tag asLoaded(const BD::Tag& tag) {
    BD::Tag padded = tag;
    padded.data.concat("", padded.data.length() % 2);
    padded.length = padded.data.length();
    return padded;
}

std::string imageOf(const std::vector<BD::Tag>& tags) {
    CBoardDescr descriptor;
    TString<char> image;
    String error;
    for (const BD::Tag& tag : tags)
        static_cast<void>(descriptor.addTag(tag.id, tag.data)); // like exportBD, always succeeds
    static_cast<void>(descriptor.exportBD(image, error));
    return std::string(image.data(), image.length());
}

} // namespace board
