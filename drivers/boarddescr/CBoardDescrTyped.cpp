#include "CBoardDescr.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "BD_TagMeaning.h"
#include "ByteOrder.h"
#include "StringTokenizer.h"

// Typed access to the tags: numbers, texts, MAC addresses, product and platform identifiers.

namespace {

constexpr BD::TagId MAC_TAG = 1;
constexpr unsigned ADDRESS_BYTES = 6;
constexpr unsigned MAC_RECORD_BYTES = 8;
constexpr BD::TagId PRODUCT_TAG = 45;
constexpr unsigned PRODUCT_BYTES = BD::meaningOf(PRODUCT_TAG).size;

// These helpers take the result of `getTag` as `tag`. If the tag is missing, `tag` is null, and
// `getTag` has set `error`.

XCode wrongSize(String& error) {
    error = CBoardDescr::ERR_WRONG_TAG_SIZE;
    return XCode(XCode::FAILURE);
}

/// Reads a number whose tag must be `width` bytes long.
template <class Value, class Number>
XCode readNumber(const BD::Tag* tag, unsigned width, Number (BD::Tag::*number)() const,
                 Value& value, String& error) {
    if (!tag)
        return XCode(XCode::FAILURE);
    if (tag->length != width)
        return wrongSize(error);
    value = static_cast<Value>((tag->*number)());
    return XCode();
}

/// Reads one 16-bit half of the product tag; `first` is the index of its first byte.
XCode readProductHalf(const BD::Tag* tag, unsigned first, unsigned& id) {
    if (!tag || tag->length != PRODUCT_BYTES)
        return XCode(XCode::FAILURE);
    const char bytes[] = {tag->data[first], tag->data[first + 1]};
    id = cntoh_uint16(bytes, 2);
    return XCode();
}

XCode writeBytes(BD::Tag* tag, const char* bytes, unsigned count) {
    return tag ? tag->setData(bytes, count) : XCode(XCode::FAILURE);
}

template <unsigned WIDTH, class Value>
XCode writeNumber(BD::Tag* tag, Value value, void (*toBytes)(Value, char*, int)) {
    char bytes[WIDTH];
    toBytes(value, bytes, WIDTH);
    return writeBytes(tag, bytes, WIDTH);
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
    return readNumber(getTag(id, index, error), 1, &BD::Tag::getDataChar, value, error);
}

XCode CBoardDescr::getTagUInt16(BD::TagId id, unsigned index, unsigned short& value,
                                String& error) {
    return readNumber(getTag(id, index, error), 2, &BD::Tag::getDataUInt16, value, error);
}

XCode CBoardDescr::getTagUInt32(BD::TagId id, unsigned index, unsigned long& value, String& error) {
    return readNumber(getTag(id, index, error), 4, &BD::Tag::getDataUInt32, value, error);
}

XCode CBoardDescr::getTagString(BD::TagId id, unsigned index, String& value, String& error) {
    const BD::Tag* const tag = getTag(id, index, error);
    if (!tag)
        return XCode(XCode::FAILURE);
    tag->getDataString(value);
    return XCode();
}

XCode CBoardDescr::setTagUInt(BD::TagId id, unsigned index, unsigned value, String& error) {
    return writeNumber<4>(getTag(id, index, error), value, uint_htonc);
}

XCode CBoardDescr::setTagUInt8(BD::TagId id, unsigned index, unsigned char value, String& error) {
    const char byte = static_cast<char>(value);
    return writeBytes(getTag(id, index, error), &byte, 1);
}

XCode CBoardDescr::setTagUInt16(BD::TagId id, unsigned index, unsigned short value, String& error) {
    return writeNumber<2>(getTag(id, index, error), value, uint16_htonc);
}

XCode CBoardDescr::setTagUInt32(BD::TagId id, unsigned index, unsigned long value, String& error) {
    return writeNumber<4>(getTag(id, index, error), value, uint32_htonc);
}

XCode CBoardDescr::setTagString(BD::TagId id, unsigned index, const String& value, String& error) {
    return writeBytes(getTag(id, index, error), value.c_str(), value.length());
}

XCode CBoardDescr::getMacAddr(const BD::Tag& tag, String& mac, unsigned& iface) const {
    if (tag.length != MAC_RECORD_BYTES)
        return XCode(XCode::FAILURE);
    unsigned char bytes[MAC_RECORD_BYTES];
    for (unsigned i = 0; i < MAC_RECORD_BYTES; ++i)
        bytes[i] = static_cast<unsigned char>(tag.data[i]);
    char text[] = "00:00:00:00:00:00";
    for (std::size_t i = 0; i < ADDRESS_BYTES; ++i) {
        text[3 * i] = "0123456789ABCDEF"[bytes[i] >> 4];
        text[3 * i + 1] = "0123456789ABCDEF"[bytes[i] & 15];
    }
    mac = text;
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

    // Two bytes longer than the stored record: the interface number is written four bytes wide
    // after the address, but only its upper half is stored. Boards in the field hold such records.
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
    // If there were MAC tags before, the MAC tag with the index `count` is the former last one:
    // that tag receives the address, and the new tag stays empty. Hosts rely on this.
    String scratch;
    return setMacAddress(count, mac, iface, scratch);
}

XCode CBoardDescr::addMacAddress(const String& mac, unsigned iface) {
    // Not a virtual call, so that a board's override of one operation does not change the other.
    return CBoardDescr::insertMacAddress(std::numeric_limits<unsigned>::max(), mac, iface);
}

XCode CBoardDescr::getPlatformID(unsigned& id, String& error) {
    return readProductHalf(getTag(PRODUCT_TAG, 0, error), 0, id);
}

XCode CBoardDescr::getProductID(unsigned& id, String& error) {
    return readProductHalf(getTag(PRODUCT_TAG, 0, error), 2, id);
}
