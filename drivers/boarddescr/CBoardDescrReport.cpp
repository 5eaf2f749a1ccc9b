#include "CBoardDescr.h"

#include <algorithm>
#include <iterator>

#include "ByteOrder.h"
#include "InfoContainer.h"

// The information reports, and the two identifiers that tag 45 carries.

namespace {

constexpr BD::TagId PRODUCT_TAG = 45;
constexpr unsigned PRODUCT_BYTES = 4;

/// How a tag's data is shown.
enum class Kind {
    MAC,
    IPV4,
    HIDDEN,
    TEXT,
    UPPER_TEXT,
    HEX_NUMBER,
    OBSOLETE,
    NUMBER,
    PRODUCT,
    HEX_DUMP
};

struct KindOfRange {
    BD::TagId first;
    BD::TagId last;
    Kind kind;
};

/// What each identifier's row shows; identifiers not listed are dumped. In ascending order.
constexpr KindOfRange KINDS[] = {
    {1, 1, Kind::MAC},
    {2, 2, Kind::IPV4},
    {3, 3, Kind::HIDDEN},
    {4, 4, Kind::IPV4},
    {5, 5, Kind::TEXT},
    {6, 7, Kind::HEX_NUMBER},
    {8, 8, Kind::OBSOLETE},
    {9, 9, Kind::HEX_NUMBER},
    {10, 13, Kind::TEXT},
    {14, 14, Kind::UPPER_TEXT},
    {15, 15, Kind::TEXT},
    {16, 18, Kind::NUMBER},
    {20, 21, Kind::NUMBER},
    {22, 22, Kind::UPPER_TEXT},
    {23, 25, Kind::TEXT},
    {26, 27, Kind::NUMBER},
    {28, 29, Kind::HEX_NUMBER},
    {41, 43, Kind::NUMBER},
    {44, 44, Kind::TEXT},
    {45, 45, Kind::PRODUCT},
    {46, 49, Kind::TEXT},
    {50, 51, Kind::HEX_NUMBER},
    {32768, 32779, Kind::NUMBER},
    {32780, 32780, Kind::HEX_NUMBER},
    {32781, 32786, Kind::NUMBER},
    {32787, 32788, Kind::TEXT},
    {32789, 32789, Kind::NUMBER},
    {32791, 32793, Kind::NUMBER},
};

Kind kindOf(BD::TagId id) {
    const auto* const row = std::lower_bound(
        std::begin(KINDS), std::end(KINDS), id,
        [](const KindOfRange& range, BD::TagId wanted) { return range.last < wanted; });
    return row != std::end(KINDS) && row->first <= id ? row->kind : Kind::HEX_DUMP;
}

unsigned byteAt(const BD::Tag& tag, unsigned index) {
    return static_cast<unsigned char>(tag.data[index]);
}

String hexDump(const BD::Tag& tag) {
    String dump;
    return tag.getDataAsHexString(dump);
}

/// The text as it is printed: it ends at a zero byte, such as the one that storing adds to an odd
/// length.
String text(const BD::Tag& tag) {
    String value;
    return String(tag.getDataString(value).c_str());
}

/// Writes the rows of one report: the header, and tags two levels below it while that is deep
/// enough.
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
    if (tag.length != PRODUCT_BYTES) {
        report.add("Product/Platform  ID", "FAILED TO READ TAG 'ProductID'");
        return;
    }
    report.add("Platform ID", String::format("%02x %02x", byteAt(tag, 0), byteAt(tag, 1)));
    report.add("Product  ID", String::format("%02x %02x", byteAt(tag, 2), byteAt(tag, 3)));
}

void addTag(Report& report, const CBoardDescr& board, const BD::Tag& tag) {
    const String name = BD::TAG_ID_TO_STRING(tag.id);
    switch (kindOf(tag.id)) {
    case Kind::HIDDEN:
        break;
    case Kind::MAC: {
        String mac;
        unsigned iface = 0;
        static_cast<void>(board.getMacAddr(tag, mac, iface)); // a bad one shows as an empty address
        report.add(name, String::format("%s iface=%d", mac.c_str(), static_cast<int>(iface)));
        break;
    }
    case Kind::IPV4:
        report.add(name, String::format("%u.%u.%u.%u", byteAt(tag, 0), byteAt(tag, 1),
                                        byteAt(tag, 2), byteAt(tag, 3)));
        break;
    case Kind::TEXT:
        report.add(name, text(tag));
        break;
    case Kind::UPPER_TEXT:
        report.add(name, text(tag).toUpperCase());
        break;
    case Kind::HEX_NUMBER:
        report.add(name, String::format("0x%x", static_cast<unsigned>(tag.getDataUInt32())));
        break;
    case Kind::NUMBER:
        report.add(name, String::format("%u", static_cast<unsigned>(tag.getDataUInt32())));
        break;
    case Kind::OBSOLETE:
        report.add(String::format("%s (obsolete)", name.c_str()), hexDump(tag));
        break;
    case Kind::PRODUCT:
        addProduct(report, tag);
        break;
    case Kind::HEX_DUMP:
        report.add(name, hexDump(tag));
        break;
    }
}

/// The 16 bits that stand at byte `first` of the tag, which may be null.
XCode readProductTag(const BD::Tag* tag, unsigned first, unsigned& id) {
    if (!tag || tag->length != PRODUCT_BYTES)
        return XCode(XCode::FAILURE);
    id = byteAt(*tag, first) << 8 | byteAt(*tag, first + 1);
    return XCode();
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

XCode CBoardDescr::getPlatformID(unsigned& id, String& error) {
    return readProductTag(getTag(PRODUCT_TAG, 0, error), 0, id);
}

XCode CBoardDescr::getProductID(unsigned& id, String& error) {
    return readProductTag(getTag(PRODUCT_TAG, 0, error), 2, id);
}
