#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "CBoardDescr.h"

namespace board {

/// The largest image that is read or written: 64 KiB.
constexpr unsigned MAX_IMAGE_SIZE = 65536;

/// The most data that one tag can store: the 16-bit length of a chunk includes the chunk's header,
/// and data of odd length gets a padding byte.
constexpr std::size_t MAX_TAG_DATA = 65530;

constexpr BD::TagId TERMINATOR_TAG = 0;
constexpr BD::TagId MAC_TAG = 1;

/// A tag, and where its chunk begins in the image.
struct ImageTag {
    BD::Tag tag;
    std::size_t offset = 0;
};

/// The bytes of a descriptor image and what the library loads from them. Immutable. A corrupt image
/// has a fault and only the tags before the fault.
class TagImage {
public:
    explicit TagImage(std::string bytes);

    const std::string& bytes() const { return m_bytes; }

    /// The tags that load, in order, without the terminator.
    const std::vector<ImageTag>& tags() const { return m_tags; }

    /// The library's message if the image is corrupt; otherwise empty. The chunk at fault begins at
    /// `usedBytes()`.
    const std::optional<std::string>& fault() const { return m_fault; }
    bool isCorrupt() const { return m_fault.has_value(); }

    /// Where the terminator begins, if there is one.
    const std::optional<std::size_t>& terminator() const { return m_terminator; }

    /// The number of bytes that the tags and the terminator occupy.
    std::size_t usedBytes() const;

    /// The offset of the bytes after the terminator, which no load reads. A load reads only the
    /// identifier of a terminator. The two bytes after the identifier count as the terminator's
    /// length field only if they have the usual value.
    std::size_t restOffset() const;

    /// The bytes of a tag's chunk as they are in the image.
    std::string chunkOf(const ImageTag& tag) const;

    /// Occurrence `index` of `id`. Throws Error with the library's message if there is none.
    const BD::Tag& find(BD::TagId id, unsigned index) const;

    /// Replaces the list of `descriptor` with the tags of the image, including the terminator. Used
    /// by `bd show` and `bd raw`: they print the reports of the library's class, so that a user
    /// sees the same rows as a program on the board.
    void loadInto(CBoardDescr& descriptor) const;

private:
    std::string m_bytes;
    std::vector<ImageTag> m_tags;
    std::optional<std::string> m_fault;
    std::optional<std::size_t> m_terminator;
    std::size_t m_tagBytes = 0;
};

/// The library's message for a missing tag.
std::string missingTag(BD::TagId id);

/// The tag as it is loaded after a store: odd data is padded with a zero byte.
BD::Tag asLoaded(const BD::Tag& tag);

/// The bytes of an image that holds exactly these tags; a terminator is a tag with identifier 0.
std::string imageOf(const std::vector<BD::Tag>& tags);

} // namespace board
