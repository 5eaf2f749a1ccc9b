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

std::deque<EditedTag> tagsOf(const TagImage& image) {
    std::deque<EditedTag> tags;
    for (const ImageTag& each : image.tags())
        tags.push_back({each.tag, image.chunkOf(each)});
    return tags;
}

} // namespace

DescriptorEdit::DescriptorEdit(TagImage image)
    : m_original(std::move(image)), m_tags(tagsOf(m_original)) {}

std::size_t DescriptorEdit::positionOf(const TagPlace& place) const {
    if (const auto position = m_tags.find(place.id, place.index))
        return *position;
    throw Error(missingTag(place.id));
}

void DescriptorEdit::replace(std::size_t position, const BD::Tag& tag) {
    const BD::Tag stored = asLoaded(tag);
    const EditedTag& edited = m_tags.at(position);
    if (tag.data == edited.tag.data || stored.data == edited.tag.data)
        return;
    m_changes.push_back({position, edited.tag, stored, wrongSizeOf(tag)});
    m_tags.replace(position, {stored, imageOf({stored})});
}

void DescriptorEdit::insertAt(std::size_t position, const BD::Tag& tag) {
    const BD::Tag stored = asLoaded(tag);
    m_tags.insert(position, {stored, imageOf({stored})});
    m_changes.push_back({position, std::nullopt, stored, wrongSizeOf(tag)});
}

std::optional<std::size_t> DescriptorEdit::placeToPut(const Assignment& assignment) const {
    const auto& [id, index] = assignment.place;
    const auto interface = interfaceToPut(assignment);
    if (!interface) {
        const std::size_t count = m_tags.count(id);
        if (index > count)
            throw Error("tag " + std::to_string(id) + "." + std::to_string(index) +
                        " can't be added (expected " + std::to_string(id) + "." +
                        std::to_string(count) + ", the next one, or lower)");
        return m_tags.find(id, index);
    }
    constexpr std::size_t ADDRESS_BYTES = 6;
    const std::string data(assignment.data.data(), assignment.data.length());
    const auto positions = m_tags.macsWith(data.substr(ADDRESS_BYTES));
    for (const std::size_t position : positions)
        if (m_tags.at(position).tag.data == assignment.data)
            return position;
    if (positions.size() > 1)
        throw Error(std::to_string(positions.size()) + " addresses have the interface number " +
                    std::to_string(*interface) +
                    " (expected an occurrence, such as MacAddress.0=mac:...)");
    if (!positions.empty())
        return positions.front();
    if (const auto twins = m_tags.macsWith(data.substr(0, ADDRESS_BYTES)); !twins.empty())
        throw Error("the address belongs to another interface already: " +
                    macOf(m_tags.at(twins.front()).tag)->word() +
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
    m_changes.push_back({position, m_tags.at(position).tag, std::nullopt});
    m_tags.remove(position);
}

void DescriptorEdit::setMac(unsigned index, const std::string& mac,
                            std::optional<unsigned> interface) {
    const std::size_t position = positionOf({MAC_TAG, index});
    const unsigned number = interface ? *interface : interfaceOf(m_tags.at(position).tag, index);
    replace(position, makeMac(mac, number));
}

void DescriptorEdit::addMac(const std::string& mac, unsigned interface) {
    // The library's own operation overwrites the last address and adds an empty tag. That
    // operation can't be changed, because hosts rely on it. Here every address stays.
    insertAt(endOfMacs(), makeMac(mac, interface));
}

std::size_t DescriptorEdit::endOfMacs() const {
    const std::size_t count = m_tags.count(MAC_TAG);
    return count == 0 ? m_tags.size() : *m_tags.find(MAC_TAG, count - 1) + 1;
}

std::vector<TagChange> DescriptorEdit::changes() const {
    std::vector<TagChange> changes = m_changes;
    if (!m_original.terminator())
        changes.push_back({m_tags.size(), std::nullopt, BD::Tag(TERMINATOR_TAG)});
    return changes;
}

std::string DescriptorEdit::image() const {
    std::string image;
    for (std::size_t position = 0; position < m_tags.size(); ++position)
        image += m_tags.at(position).chunk;
    return image + imageOf({BD::Tag(TERMINATOR_TAG)});
}

} // namespace board
