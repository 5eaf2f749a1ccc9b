#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "descriptor/TagImage.h"

namespace board {

/// A tag and its bytes in the image.
struct EditedTag {
    BD::Tag tag;
    std::string chunk;
};

/// The list of tags during an edit. It stays fast if the edit makes many assignments (struct
/// Assignment): a look-up does not search the list, and an insertion moves no other tags if it is
/// at the end or right after the previous insertion. Positions are counted from 0. One thread.
class EditedTags {
public:
    explicit EditedTags(std::deque<EditedTag> tags) : m_behind(std::move(tags)) {}

    std::size_t size() const { return m_front.size() + m_behind.size(); }
    const EditedTag& at(std::size_t position) const {
        return position < m_front.size() ? m_front[position] : m_behind[position - m_front.size()];
    }

    /// The number of tags with that identifier.
    std::size_t count(BD::TagId id) const {
        const auto found = index().byId.find(id);
        return found == m_index->byId.end() ? 0 : found->second.size();
    }
    /// The position of occurrence `occurrence` of `id`; empty if there is none.
    std::optional<std::size_t> find(BD::TagId id, std::size_t occurrence) const {
        if (occurrence >= count(id))
            return std::nullopt;
        return positionOf(m_index->byId.at(id)[occurrence]);
    }
    /// The positions, in ascending order, of the MAC address tags with `bytes`: either the six
    /// bytes of an address or the two bytes of an interface number.
    std::vector<std::size_t> macsWith(const std::string& bytes) const {
        std::vector<std::size_t> positions;
        if (const auto found = index().macs.find(bytes); found != m_index->macs.end())
            for (const Slot slot : found->second)
                positions.push_back(positionOf(slot));
        return positions;
    }

    /// `tag` must have the identifier of the tag that it replaces.
    void replace(std::size_t position, EditedTag tag) {
        if (m_index) {
            const Slot slot = slotOf(position);
            for (const std::string& key : macKeys(at(position).tag))
                m_index->macs[key].erase(slot);
            enterMac(slot, tag.tag);
        }
        (position < m_front.size() ? m_front[position] : m_behind[position - m_front.size()]) =
            std::move(tag);
    }

    void insert(std::size_t position, EditedTag tag) {
        const bool isLast = position == size();
        if (!isLast)
            divideAt(position);
        if (m_index) {
            const Slot slot = isLast ? slotOf(position) : m_front.size();
            const std::vector<Slot>& alike = m_index->byId[tag.tag.id];
            if (alike.empty() || alike.back() < slot)
                enter(slot, tag.tag);
            else
                m_index.reset();
        }
        if (isLast)
            m_behind.push_back(std::move(tag));
        else
            m_front.push_back(std::move(tag));
    }

    void remove(std::size_t position) {
        divideAt(position);
        m_behind.pop_front();
        m_index.reset();
    }

private:
    /// A tag's position in `m_front`, or BEHIND plus its position in `m_behind`. It does not change
    /// if tags are added at the end of either list.
    using Slot = std::size_t;
    static constexpr Slot BEHIND = Slot{1} << 31U;

    struct Index {
        std::unordered_map<BD::TagId, std::vector<Slot>> byId; ///< in ascending order
        std::unordered_map<std::string, std::set<Slot>> macs;  ///< by the argument of `macsWith`
    };

    Slot slotOf(std::size_t position) const {
        return position < m_front.size() ? position : BEHIND + (position - m_front.size());
    }
    std::size_t positionOf(Slot slot) const {
        return slot < BEHIND ? slot : m_front.size() + (slot - BEHIND);
    }

    /// The arguments with which `macsWith` finds a tag; none if the tag is not an address.
    static std::vector<std::string> macKeys(const BD::Tag& tag) {
        constexpr unsigned ADDRESS_BYTES = 6, ALL_BYTES = 8;
        if (tag.id != MAC_TAG || tag.data.length() != ALL_BYTES)
            return {};
        const char* const data = tag.data.data();
        return {{data, ADDRESS_BYTES}, {data + ADDRESS_BYTES, data + ALL_BYTES}};
    }
    void enterMac(Slot slot, const BD::Tag& tag) const {
        for (const std::string& key : macKeys(tag))
            m_index->macs[key].insert(slot);
    }
    void enter(Slot slot, const BD::Tag& tag) const {
        m_index->byId[tag.id].push_back(slot);
        enterMac(slot, tag);
    }
    const Index& index() const {
        if (!m_index) {
            m_index.emplace();
            for (std::size_t position = 0; position < size(); ++position)
                enter(slotOf(position), at(position).tag);
        }
        return *m_index;
    }

    /// Moves tags between the two lists until `m_behind` begins at `position`.
    void divideAt(std::size_t position) {
        if (m_front.size() != position)
            m_index.reset();
        for (; m_front.size() < position; m_behind.pop_front())
            m_front.push_back(std::move(m_behind.front()));
        for (; m_front.size() > position; m_front.pop_back())
            m_behind.push_front(std::move(m_front.back()));
    }

    /// The tags up to the last removal or insertion; an insertion at the end does not count.
    std::vector<EditedTag> m_front;
    std::deque<EditedTag> m_behind;       ///< the tags after those in m_front
    mutable std::optional<Index> m_index; ///< made by the first look-up
};

} // namespace board
