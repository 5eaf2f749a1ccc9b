#include "CBoardDescr.h"

#include <algorithm>
#include <limits>

#include "ByteOrder.h"
#include "StringTokenizer.h"

// Typed access to the tags: numbers, texts, MAC addresses.

namespace {

constexpr BD::TagId MAC_TAG = 1;
constexpr unsigned ADDRESS_BYTES = 6;
constexpr unsigned MAC_RECORD_BYTES = 8;

XCode wrongSize(String& error) {
    error = CBoardDescr::ERR_WRONG_TAG_SIZE;
    return XCode(XCode::FAILURE);
}

} // namespace

XCode CBoardDescr::getTagUInt(BD::TagId id, unsigned index, unsigned& value, String& error) {
    const BD::Tag* const tag = getTag(id, index, error);
    if (!tag)
        return XCode(XCode::FAILURE);
    if (tag->length > 4)
        return wrongSize(error);
    value = tag->getDataUInt();
    return XCode();
}

XCode CBoardDescr::getTagUInt8(BD::TagId id, unsigned index, unsigned char& value, String& error) {
    const BD::Tag* const tag = getTag(id, index, error);
    if (!tag)
        return XCode(XCode::FAILURE);
    if (tag->length != 1)
        return wrongSize(error);
    value = static_cast<unsigned char>(tag->getDataChar());
    return XCode();
}

XCode CBoardDescr::getTagUInt16(BD::TagId id, unsigned index, unsigned short& value, String& error) {
    const BD::Tag* const tag = getTag(id, index, error);
    if (!tag)
        return XCode(XCode::FAILURE);
    if (tag->length != 2)
        return wrongSize(error);
    value = tag->getDataUInt16();
    return XCode();
}

XCode CBoardDescr::getTagUInt32(BD::TagId id, unsigned index, unsigned long& value, String& error) {
    const BD::Tag* const tag = getTag(id, index, error);
    if (!tag)
        return XCode(XCode::FAILURE);
    if (tag->length != 4)
        return wrongSize(error);
    value = tag->getDataUInt32();
    return XCode();
}

XCode CBoardDescr::getTagString(BD::TagId id, unsigned index, String& value, String& error) {
    const BD::Tag* const tag = getTag(id, index, error);
    if (!tag)
        return XCode(XCode::FAILURE);
    tag->getDataString(value);
    return XCode();
}

XCode CBoardDescr::setTagUInt(BD::TagId id, unsigned index, unsigned value, String& error) {
    char bytes[4];
    uint_htonc(value, bytes, sizeof bytes);
    BD::Tag* const tag = getTag(id, index, error);
    return tag ? tag->setData(bytes, sizeof bytes) : XCode(XCode::FAILURE);
}

XCode CBoardDescr::setTagUInt8(BD::TagId id, unsigned index, unsigned char value, String& error) {
    const char byte = static_cast<char>(value);
    BD::Tag* const tag = getTag(id, index, error);
    return tag ? tag->setData(&byte, 1) : XCode(XCode::FAILURE);
}

XCode CBoardDescr::setTagUInt16(BD::TagId id, unsigned index, unsigned short value, String& error) {
    char bytes[2];
    uint16_htonc(value, bytes, sizeof bytes);
    BD::Tag* const tag = getTag(id, index, error);
    return tag ? tag->setData(bytes, sizeof bytes) : XCode(XCode::FAILURE);
}

XCode CBoardDescr::setTagUInt32(BD::TagId id, unsigned index, unsigned long value, String& error) {
    char bytes[4];
    uint32_htonc(value, bytes, sizeof bytes);
    BD::Tag* const tag = getTag(id, index, error);
    return tag ? tag->setData(bytes, sizeof bytes) : XCode(XCode::FAILURE);
}

XCode CBoardDescr::setTagString(BD::TagId id, unsigned index, const String& value, String& error) {
    BD::Tag* const tag = getTag(id, index, error);
    return tag ? tag->setData(value.c_str(), value.length()) : XCode(XCode::FAILURE);
}

XCode CBoardDescr::getMacAddr(const BD::Tag& tag, String& mac, unsigned& iface) const {
    if (tag.length != MAC_RECORD_BYTES)
        return XCode(XCode::FAILURE);
    unsigned char bytes[MAC_RECORD_BYTES];
    for (unsigned i = 0; i < MAC_RECORD_BYTES; ++i)
        bytes[i] = static_cast<unsigned char>(tag.data[i]);
    mac = String::format("%02X:%02X:%02X:%02X:%02X:%02X", bytes[0], bytes[1], bytes[2], bytes[3], bytes[4],
                         bytes[5]);
    iface = static_cast<unsigned>(bytes[6]) << 8 | bytes[7];
    return XCode();
}

XCode CBoardDescr::getMacAddress(unsigned index, String& mac, unsigned& iface, String& error) {
    const BD::Tag* const tag = getTag(MAC_TAG, index, error);
    return tag ? getMacAddr(*tag, mac, iface) : XCode(XCode::FAILURE);
}

XCode CBoardDescr::setMacAddress(unsigned index, const String& mac, unsigned iface, String& error) {
    BD::Tag* const tag = getTag(MAC_TAG, index, error);
    if (!tag)
        return XCode(XCode::FAILURE);

    // Two bytes more than the record: the interface number is written four bytes wide behind the address, so
    // that its upper half is what the record keeps. Boards in the field hold records made this way.
    char record[MAC_RECORD_BYTES + 2] = {};
    StringTokenizer groups(mac, ":");
    for (unsigned k = 0; groups.hasMoreTokens(); ++k) {
        if (k >= ADDRESS_BYTES) {
            error = ERR_MAC_TOO_LONG;
            return XCode(XCode::FAILURE);
        }
        record[k] = static_cast<char>(groups.nextToken().toInteger(16) & 0xFF);
    }
    uint_htonc(iface, record + ADDRESS_BYTES, sizeof iface);
    return tag->setData(record, MAC_RECORD_BYTES);
}

XCode CBoardDescr::insertMacAddress(unsigned index, const String& mac, unsigned iface) {
    const unsigned count = getNumberOfTag(MAC_TAG);
    const unsigned anchor = count == 0 ? 0 : std::min(index, count - 1);
    m_tags.insert(getTagIterator(MAC_TAG, anchor), BD::Tag(MAC_TAG));
    // Occurrence `count` is the former last one wherever there was one: it takes the address and the new tag
    // stays empty. Hosts rely on it.
    String scratch;
    return setMacAddress(count, mac, iface, scratch);
}

XCode CBoardDescr::addMacAddress(const String& mac, unsigned iface) {
    // Not through the virtual table: a board that replaces one of the two keeps the other.
    return CBoardDescr::insertMacAddress(std::numeric_limits<unsigned>::max(), mac, iface);
}
