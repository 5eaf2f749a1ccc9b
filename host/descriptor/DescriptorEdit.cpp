#include "descriptor/DescriptorEdit.h"

#include <algorithm>
#include <utility>

#include "base/Error.h"
#include "descriptor/DescriptorCheck.h"

namespace board {

namespace {

BD::Tag makeTag(BD::TagId id, const TString<char>& data) {
    BD::Tag tag(id);
    static_cast<void>(tag.setData(data)); // always succeeds
    return tag;
}

BD::Tag makeMac(const std::string& mac, unsigned interface) {
    const std::string data = macData(mac, interface);
    return makeTag(MAC_TAG, {data.data(), static_cast<unsigned>(data.size())});
}

/// The interface number of MAC address `index`. Throws if the tag is not an address record.
unsigned interfaceOf(const BD::Tag& tag, unsigned index) {
    if (const std::optional<MacAddress> address = macOf(tag))
        return address->interface;
    throw Error("MAC address " + std::to_string(index) + " has " + std::to_string(tag.length) +
                " bytes and no interface number to keep (expected 8 bytes, or a number with the "
                "address)");
}

} // namespace

DescriptorEdit::DescriptorEdit(TagImage image) : m_original(std::move(image)) {
    m_tags.reserve(m_original.tags().size());
    for (const ImageTag& each : m_original.tags())
        m_tags.push_back({each.tag, m_original.chunkOf(each)});
}

std::size_t DescriptorEdit::positionOf(const TagPlace& place) const {
    unsigned occurrence = 0;
    for (std::size_t position = 0; position < m_tags.size(); ++position)
        if (m_tags[position].tag.id == place.id && occurrence++ == place.index)
            return position;
    throw Error(missingTag(place.id));
}

void DescriptorEdit::replace(std::size_t position, const BD::Tag& tag) {
    const BD::Tag stored = asLoaded(tag);
    EditedTag& edited = m_tags[position];
    if (tag.data == edited.tag.data || stored.data == edited.tag.data)
        return;
    m_changes.push_back({position, edited.tag, stored, wrongSizeOf(tag)});
    edited = {stored, imageOf({stored})};
}

void DescriptorEdit::insertAt(std::size_t position, const BD::Tag& tag) {
    const BD::Tag stored = asLoaded(tag);
    m_tags.insert(m_tags.begin() + static_cast<std::ptrdiff_t>(position),
                  {stored, imageOf({stored})});
    m_changes.push_back({position, std::nullopt, stored, wrongSizeOf(tag)});
}

std::vector<std::size_t> DescriptorEdit::positionsOf(BD::TagId id) const {
    std::vector<std::size_t> positions;
    for (std::size_t position = 0; position < m_tags.size(); ++position)
        if (m_tags[position].tag.id == id)
            positions.push_back(position);
    return positions;
}

std::optional<std::size_t> DescriptorEdit::placeToPut(const Assignment& assignment) const {
    const auto& [id, index] = assignment.place;
    std::vector<std::size_t> positions = positionsOf(id);
    const auto interface = interfaceToPut(assignment);
    if (!interface) {
        if (index > positions.size())
            throw Error("tag " + std::to_string(id) + "." + std::to_string(index) +
                        " can't be added (expected " + std::to_string(id) + "." +
                        std::to_string(positions.size()) + ", the next one, or lower)");
        return index < positions.size() ? std::optional(positions[index]) : std::nullopt;
    }
    const auto isOther = [&](std::size_t position) {
        const auto found = macOf(m_tags[position].tag);
        return !found || found->interface != *interface;
    };
    positions.erase(std::remove_if(positions.begin(), positions.end(), isOther), positions.end());
    for (const std::size_t position : positions)
        if (m_tags[position].tag.data == assignment.data)
            return position;
    if (positions.size() > 1)
        throw Error(std::to_string(positions.size()) + " addresses have the interface number " +
                    std::to_string(*interface) +
                    " (expected an occurrence, such as MacAddress.0=mac:...)");
    if (!positions.empty())
        return positions.front();
    const auto isSameAddress = [&](const EditedTag& each) {
        constexpr std::size_t ADDRESS_BYTES = 6;
        return each.tag.id == MAC_TAG && macOf(each.tag) &&
               std::equal(each.tag.data.data(), each.tag.data.data() + ADDRESS_BYTES,
                          assignment.data.data());
    };
    if (const auto twin = std::find_if(m_tags.begin(), m_tags.end(), isSameAddress);
        twin != m_tags.end())
        throw Error(
            "the address belongs to another interface already: " + macOf(twin->tag)->word() +
            " (expected a new address, or an occurrence to replace, such as "
            "MacAddress.0=mac:...)");
    return std::nullopt;
}

void DescriptorEdit::set(const Assignment& assignment) {
    replace(positionOf(assignment.place), makeTag(assignment.place.id, assignment.data));
}

void DescriptorEdit::put(const Assignment& assignment) {
    const BD::Tag tag = makeTag(assignment.place.id, assignment.data);
    if (const auto position = placeToPut(assignment))
        replace(*position, tag);
    else
        insertAt(tag.id == MAC_TAG ? endOfMacs() : m_tags.size(), tag);
}

void DescriptorEdit::add(const Assignment& assignment) {
    insert(m_tags.size(), assignment);
}

void DescriptorEdit::insert(std::size_t position, const Assignment& assignment) {
    insertAt(std::min(position, m_tags.size()), makeTag(assignment.place.id, assignment.data));
}

void DescriptorEdit::remove(const TagPlace& place) {
    const std::size_t position = positionOf(place);
    m_changes.push_back({position, m_tags[position].tag, std::nullopt});
    m_tags.erase(m_tags.begin() + static_cast<std::ptrdiff_t>(position));
}

void DescriptorEdit::setMac(unsigned index, const std::string& mac,
                            std::optional<unsigned> interface) {
    const std::size_t position = positionOf({MAC_TAG, index});
    const unsigned number = interface ? *interface : interfaceOf(m_tags[position].tag, index);
    replace(position, makeMac(mac, number));
}

void DescriptorEdit::addMac(const std::string& mac, unsigned interface) {
    // The library's own operation overwrites the last address and leaves an empty tag, which hosts
    // rely on. Here every address stays.
    insertAt(endOfMacs(), makeMac(mac, interface));
}

std::size_t DescriptorEdit::endOfMacs() const {
    const std::vector<std::size_t> positions = positionsOf(MAC_TAG);
    return positions.empty() ? m_tags.size() : positions.back() + 1;
}

std::vector<TagChange> DescriptorEdit::changes() const {
    std::vector<TagChange> changes = m_changes;
    if (!m_original.terminator())
        changes.push_back({m_tags.size(), std::nullopt, BD::Tag(TERMINATOR_TAG)});
    return changes;
}

std::string DescriptorEdit::image() const {
    std::string image;
    for (const EditedTag& each : m_tags)
        image += each.chunk;
    return image + imageOf({BD::Tag(TERMINATOR_TAG)});
}

} // namespace board
