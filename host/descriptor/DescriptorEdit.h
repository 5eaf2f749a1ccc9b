#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "CBoardDescr.h"
#include "descriptor/TagWords.h"

namespace board {

/// One place where a tag list differs from what it was.
struct TagChange {
    unsigned position; ///< in the whole list, counted from 0, when the change was made
    std::optional<BD::Tag> before;
    std::optional<BD::Tag> after; ///< as it will be loaded: odd data has its padding
};

/// A descriptor's tags, taken from an image, being changed.
///
/// The terminator is kept out of the way: nothing lands behind it, and the image that is made ends
/// with exactly one. Chunks of tags that are left alone are copied byte for byte, also such as the
/// library's writer would make otherwise. Operations throw Error with the library's message where a
/// tag is not there, and then change nothing. A tag that already holds what it shall hold is no
/// change.
class DescriptorEdit {
public:
    /// The tags of `image`, of a corrupt one those before the fault.
    explicit DescriptorEdit(const std::string& image);

    /// The library's message where the image is corrupt; empty where it is not.
    const std::string& fault() const { return m_fault; }

    /// How many bytes of the image the tags and the terminator take; all of a corrupt one.
    std::size_t usedBytes() const { return m_usedBytes; }

    /// Replaces a tag's data where it stands.
    void set(const Assignment& assignment);
    /// In front of the terminator.
    void add(const Assignment& assignment);
    /// At `position` of the whole list; at or past its end, in front of the terminator.
    void insert(unsigned position, const Assignment& assignment);
    void remove(const TagPlace& place);

    /// Overwrites MAC address `index`. Without a number the tag keeps its own.
    void setMac(unsigned index, const std::string& mac, std::optional<unsigned> interface);
    /// Behind the last MAC address; the first one goes in front of the terminator.
    void addMac(const std::string& mac, unsigned interface);

    /// What became different, in the order it was done; a terminator that was missing comes last.
    std::vector<TagChange> changes() const;

    /// The whole image, terminator included.
    TString<char> image() const;

private:
    /// The tag's position and itself; throws where there is none.
    std::pair<unsigned, BD::Tag*> find(const TagPlace& place);
    void recordChange(unsigned position, const BD::Tag& before, const BD::Tag& tag);
    void recordNew(unsigned position);

    const std::string m_original;
    std::string m_fault;
    std::size_t m_usedBytes = 0;
    bool m_hadTerminator = false;
    CBoardDescr m_descriptor; ///< without the terminator
    std::unordered_map<const BD::Tag*, std::size_t>
        m_untouched; ///< where its chunk stands in the original
    std::vector<TagChange> m_changes;
};

} // namespace board
