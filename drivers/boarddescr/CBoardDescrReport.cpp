#include "CBoardDescr.h"

#include <string>

#include "BD_TagMeaning.h"
#include "InfoContainer.h"

// The information reports. Most texts are formatted without printf: a host makes a report when it
// starts, and printf would keep 128 KiB of the C library in the host's memory.

namespace {

unsigned byteAt(const BD::Tag& tag, unsigned index) {
    return static_cast<unsigned char>(tag.data[index]);
}

String hexDump(const BD::Tag& tag) {
    String dump;
    return tag.getDataAsHexString(dump);
}

String decimal(unsigned number) {
    return String(std::to_string(number).c_str());
}

/// Two bytes as "1a 2b".
String hexPair(const BD::Tag& tag, unsigned index) {
    std::string pair;
    for (const unsigned byte : {byteAt(tag, index), byteAt(tag, index + 1)}) {
        if (!pair.empty())
            pair += ' ';
        pair += "0123456789abcdef"[byte >> 4];
        pair += "0123456789abcdef"[byte & 15];
    }
    return String(pair.c_str());
}

/// The text up to its first zero byte. A text of odd length is stored with a zero byte as padding.
String text(const BD::Tag& tag) {
    String value;
    return String(tag.getDataString(value).c_str());
}

/// Adds the rows of one report to the container: the header and, two levels below it, the tags.
/// Leaves out what is deeper than `maxLevel`.
class Report {
public:
    Report(InfoContainer& container, unsigned maxLevel, unsigned level, unsigned maxIndex,
           unsigned index, const String& prefix)
        : m_container(container), m_level(level + DEPTH), m_index(index),
          m_hasHeader(level <= maxLevel && index <= maxIndex),
          m_hasRows(m_hasHeader && maxLevel - level >= DEPTH) {
        if (m_hasHeader)
            m_container.add(level, index, String(prefix).concat("Board Descriptor"),
                            String::EMPTY());
    }

    void add(const String& key, const String& value) {
        if (m_hasRows)
            m_container.add(m_level, m_index, key, value);
    }

private:
    static constexpr unsigned DEPTH = 2;
    InfoContainer& m_container;
    const unsigned m_level;
    const unsigned m_index;
    const bool m_hasHeader;
    const bool m_hasRows;
};

void addProduct(Report& report, const BD::Tag& tag) {
    if (tag.length != BD::meaningOf(tag.id).size) {
        report.add("Product/Platform  ID", "FAILED TO READ TAG 'ProductID'");
        return;
    }
    report.add("Platform ID", hexPair(tag, 0));
    report.add("Product  ID", hexPair(tag, 2));
}

void addTag(Report& report, const CBoardDescr& board, const BD::Tag& tag) {
    const String name = BD::TAG_ID_TO_STRING(tag.id);
    switch (BD::meaningOf(tag.id).kind) {
    case BD::TagKind::HIDDEN:
        break;
    case BD::TagKind::MAC: {
        String mac;
        unsigned iface = 0;
        // If the record has the wrong size, the row shows an empty address.
        static_cast<void>(board.getMacAddr(tag, mac, iface));
        report.add(name, mac.concat(" iface=").concat(decimal(iface)));
        break;
    }
    case BD::TagKind::IPV4: {
        String address = decimal(byteAt(tag, 0));
        for (const unsigned i : {1U, 2U, 3U})
            address.concat(".").concat(decimal(byteAt(tag, i)));
        report.add(name, address);
        break;
    }
    case BD::TagKind::TEXT:
        report.add(name, text(tag));
        break;
    case BD::TagKind::UPPER_TEXT:
        report.add(name, text(tag).toUpperCase());
        break;
    case BD::TagKind::HEX_NUMBER:
        report.add(name, String::format("0x%x", static_cast<unsigned>(tag.getDataUInt32())));
        break;
    case BD::TagKind::NUMBER:
        report.add(name, decimal(static_cast<unsigned>(tag.getDataUInt32())));
        break;
    case BD::TagKind::OBSOLETE:
        report.add(String::format("%s (obsolete)", name.c_str()), hexDump(tag));
        break;
    case BD::TagKind::PRODUCT:
        addProduct(report, tag);
        break;
    case BD::TagKind::BYTES:
        report.add(name, hexDump(tag));
        break;
    }
}

} // namespace

InfoContainer& CBoardDescr::getInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                                    unsigned maxIndex, unsigned index, const String& prefix) const {
    Report report(container, maxLevel, level, maxIndex, index, prefix);
    for (const BD::Tag& tag : m_tags)
        ::addTag(report, *this, tag);
    return container;
}

InfoContainer& CBoardDescr::getRawInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                                       unsigned maxIndex, unsigned index,
                                       const String& prefix) const {
    Report report(container, maxLevel, level, maxIndex, index, prefix);
    int number = 0;
    for (const BD::Tag& tag : m_tags)
        report.add(String::format("%d - Tag: %u (%s)", number++, static_cast<unsigned>(tag.id),
                                  BD::TAG_ID_TO_STRING(tag.id).c_str()),
                   String::format("len: %.2d  data: %s", static_cast<int>(tag.length),
                                  hexDump(tag).c_str()));
    return container;
}
