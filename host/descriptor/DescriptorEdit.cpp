#include "descriptor/DescriptorEdit.h"

#include <algorithm>
#include <utility>

#include "base/Error.h"

namespace board {

namespace {

constexpr BD::TagId MAC_TAG = 1;
constexpr BD::TagId TERMINATOR = 0;
constexpr std::size_t HEADER_BYTES = 4;

/// The tag as it comes back once it is stored: odd data is padded.
BD::Tag stored(const BD::Tag& tag) {
    BD::Tag padded = tag;
    padded.data.concat("", padded.data.length() % 2);
    padded.length = padded.data.length();
    return padded;
}

void expect(const XCode& status, const String& error) {
    if (!status.isSuccess())
        throw Error(error.c_str());
}

/// The library keeps the upper 16 bits of the number that it is given.
unsigned asTheRecordKeepsIt(unsigned interface) {
    return interface << 16;
}

} // namespace

DescriptorEdit::DescriptorEdit(const std::string& image) : m_original(image) {
    String error;
    const TString<char> bytes(image.data(), static_cast<unsigned>(image.size()));
    if (!m_descriptor.importBD(bytes, error).isSuccess())
        m_fault = error.c_str();
    for (const BD::Tag& tag : m_descriptor.getTags()) {
        if (tag.id == TERMINATOR)
            m_hadTerminator = true;
        else
            m_untouched.emplace(&tag, m_usedBytes);
        m_usedBytes += HEADER_BYTES + tag.length;
    }
    if (m_hadTerminator)
        expect(m_descriptor.removeTag(TERMINATOR, 0, error), error);
    if (!m_fault.empty())
        m_usedBytes = image.size();
}

std::pair<unsigned, BD::Tag*> DescriptorEdit::find(const TagPlace& place) {
    String error;
    BD::Tag* const wanted = m_descriptor.getTag(place.id, place.index, error);
    if (!wanted)
        throw Error(error.c_str());
    unsigned position = 0;
    for (const BD::Tag& tag : m_descriptor.getTags()) {
        if (&tag == wanted)
            break;
        ++position;
    }
    return {position, wanted};
}

void DescriptorEdit::recordChange(unsigned position, const BD::Tag& before, const BD::Tag& tag) {
    m_untouched.erase(&tag);
    m_changes.push_back({position, before, stored(tag)});
}

void DescriptorEdit::recordNew(unsigned position) {
    unsigned each = 0;
    for (const BD::Tag& tag : m_descriptor.getTags())
        if (each++ == position)
            m_changes.push_back({position, std::nullopt, stored(tag)});
}

void DescriptorEdit::set(const Assignment& assignment) {
    const auto [position, tag] = find(assignment.place);
    BD::Tag wanted = *tag;
    static_cast<void>(wanted.setData(assignment.data)); // always succeeds
    if (wanted.data == tag->data || stored(wanted).data == tag->data)
        return;
    const BD::Tag before = *tag;
    String error;
    expect(m_descriptor.setTag(assignment.place.id, assignment.place.index, assignment.data, error),
           error);
    recordChange(position, before, *tag);
}

void DescriptorEdit::add(const Assignment& assignment) {
    insert(m_descriptor.getTags().size(), assignment);
}

void DescriptorEdit::insert(unsigned position, const Assignment& assignment) {
    position = std::min(position, m_descriptor.getTags().size());
    static_cast<void>(m_descriptor.insertTag(position, assignment.place.id, assignment.data));
    recordNew(position);
}

void DescriptorEdit::remove(const TagPlace& place) {
    const auto [position, tag] = find(place);
    m_untouched.erase(tag);
    m_changes.push_back({position, *tag, std::nullopt});
    String error;
    expect(m_descriptor.removeTag(place.id, place.index, error), error);
}

void DescriptorEdit::setMac(unsigned index, const std::string& mac,
                            std::optional<unsigned> interface) {
    const auto [position, tag] = find({MAC_TAG, index});
    const BD::Tag before = *tag;
    String former, error;
    unsigned number = 0;
    if (interface)
        number = *interface;
    else if (!m_descriptor.getMacAddr(before, former, number).isSuccess())
        throw Error("MAC address " + std::to_string(index) + " has " +
                    std::to_string(before.length) +
                    " bytes and no interface number to keep (expected 8 bytes, or a number with "
                    "the address)");
    expect(m_descriptor.setMacAddress(index, mac.c_str(), asTheRecordKeepsIt(number), error),
           error);
    if (tag->data != before.data)
        recordChange(position, before, *tag);
}

void DescriptorEdit::addMac(const std::string& mac, unsigned interface) {
    // The library's own operation writes the new address over the last one and leaves an empty tag;
    // hosts rely on that. Here every address stays: an empty tag behind the last one takes the new
    // address.
    const unsigned count = m_descriptor.getNumberOfTag(MAC_TAG);
    const unsigned position =
        count > 0 ? find({MAC_TAG, count - 1}).first + 1 : m_descriptor.getTags().size();
    static_cast<void>(
        m_descriptor.insertTag(position, MAC_TAG, TString<char>())); // always succeeds
    String error;
    expect(m_descriptor.setMacAddress(count, mac.c_str(), asTheRecordKeepsIt(interface), error),
           error);
    recordNew(position);
}

std::vector<TagChange> DescriptorEdit::changes() const {
    std::vector<TagChange> changes = m_changes;
    if (!m_hadTerminator)
        changes.push_back({m_descriptor.getTags().size(), std::nullopt, BD::Tag(TERMINATOR)});
    return changes;
}

TString<char> DescriptorEdit::image() const {
    TString<char> image;
    const auto append = [&image](BD::TagId id, const TString<char>& data) {
        CBoardDescr single;
        String error;
        static_cast<void>(single.addTag(id, data)); // these two always succeed
        static_cast<void>(single.exportBD(image, error));
    };
    for (const BD::Tag& tag : m_descriptor.getTags()) {
        const auto chunk = m_untouched.find(&tag);
        if (chunk == m_untouched.end())
            append(tag.id, tag.data);
        else
            image.concat(m_original.data() + chunk->second,
                         static_cast<unsigned>(HEADER_BYTES) + tag.length);
    }
    append(TERMINATOR, TString<char>());
    return image;
}

} // namespace board
