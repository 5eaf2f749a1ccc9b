#pragma once

#include <optional>
#include <string>
#include <vector>

#include "descriptor/EditedTags.h"
#include "descriptor/TagWords.h"

namespace board {

/// One change of a tag list.
struct TagChange {
    std::size_t position; ///< in the whole list, counted from 0, at the time of the change
    std::optional<BD::Tag> before;
    std::optional<BD::Tag> after; ///< as it will load: odd data includes its padding

    /// "2 bytes (expected 4)" if the new data, before padding, has the wrong size for its tag.
    std::optional<std::string> wrongSize = std::nullopt;
};

/// The tags of an image while they are being changed.
///
/// The terminator is kept apart: no tag is placed after it, and the new image ends with exactly one
/// terminator. The chunks of tags that are not changed are copied byte for byte, even if the
/// library would write them differently. An operation throws Error with the library's message if
/// its tag is missing, and then changes nothing. Setting a tag to what it already holds is not a
/// change.
class DescriptorEdit {
public:
    /// Starts with the tags of `image`; if the image is corrupt, with those before the fault.
    explicit DescriptorEdit(TagImage image);

    const TagImage& original() const { return m_original; }

    /// Replaces a tag's data; the tag keeps its position.
    void set(const Assignment& assignment);
    /// Sets a tag, or adds it if it is missing: an address after the last address, any other tag
    /// before the terminator. If no occurrence is named, an address replaces the one with the same
    /// interface number. Throws Error if several addresses have that number and none of them is the
    /// new one, if the address to add belongs to another interface already, or if the named
    /// occurrence is missing and is not the next one.
    void put(const Assignment& assignment);
    /// Adds a tag before the terminator.
    void add(const Assignment& assignment);
    /// Inserts a tag at `position` in the whole list, or before the terminator if `position` is at
    /// or past the end.
    void insert(std::size_t position, const Assignment& assignment);
    void remove(const TagPlace& place);

    /// Overwrites MAC address `index`. Without an interface number, the tag keeps its old number.
    void setMac(unsigned index, const std::string& mac, std::optional<unsigned> interface);
    /// Adds the address after the last address, or before the terminator if there is none.
    void addMac(const std::string& mac, unsigned interface);

    /// The changes in the order they were made; if the image had no terminator, adding it comes
    /// last.
    std::vector<TagChange> changes() const;

    /// The bytes of the new image, terminator included.
    std::string image() const;

private:
    /// Throws Error if the tag is missing.
    std::size_t positionOf(const TagPlace& place) const;
    /// Where `put` sets a tag; empty if it adds one.
    std::optional<std::size_t> placeToPut(const Assignment& assignment) const;
    /// The position after the last MAC address; without one, the end of the list.
    std::size_t endOfMacs() const;
    void replace(std::size_t position, const BD::Tag& tag);
    void insertAt(std::size_t position, const BD::Tag& tag);

    const TagImage m_original;
    EditedTags m_tags; ///< without the terminator
    std::vector<TagChange> m_changes;
};

} // namespace board
