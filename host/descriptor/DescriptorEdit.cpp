#include "descriptor/DescriptorEdit.h"

#include <algorithm>
#include <utility>

#include "base/Error.h"

namespace board {

namespace {

BD::Tag makeTag(BD::TagId id, const TString<char>& data) {
    BD::Tag tag(id);
    static_cast<void>(tag.setData(data)); // always succeeds
    return tag;
}

BD::Tag makeMacTag(const std::string& mac, unsigned interface) {
    CBoardDescr single;
    String error;
    static_cast<void>(single.addTag(MAC_TAG, TString<char>())); // always succeeds
    // The library stores the upper 16 bits of the number that it receives.
    if (!single.setMacAddress(0, mac.c_str(), interface << 16, error).isSuccess())
        throw Error(error.c_str());
    return *single.getTags().begin();
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
    m_changes.push_back({position, edited.tag, stored});
    edited = {stored, imageOf({stored})};
}

void DescriptorEdit::insertAt(std::size_t position, const BD::Tag& tag) {
    const BD::Tag stored = asLoaded(tag);
    m_tags.insert(m_tags.begin() + static_cast<std::ptrdiff_t>(position),
                  {stored, imageOf({stored})});
    m_changes.push_back({position, std::nullopt, stored});
}

void DescriptorEdit::set(const Assignment& assignment) {
    replace(positionOf(assignment.place), makeTag(assignment.place.id, assignment.data));
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
    replace(position, makeMacTag(mac, number));
}

void DescriptorEdit::addMac(const std::string& mac, unsigned interface) {
    // The library's own operation overwrites the last address and leaves an empty tag, which hosts
    // rely on. Here every address stays.
    const auto last = std::find_if(m_tags.rbegin(), m_tags.rend(),
                                   [](const EditedTag& each) { return each.tag.id == MAC_TAG; });
    const auto behindLast = static_cast<std::size_t>(m_tags.rend() - last);
    insertAt(last == m_tags.rend() ? m_tags.size() : behindLast, makeMacTag(mac, interface));
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
