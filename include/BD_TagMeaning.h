#pragma once

#include "BD.h"

namespace BD {

/// How a tag's data is read and shown.
enum class TagKind {
    BYTES,      ///< any data; shown as a byte dump
    MAC,        ///< a six-byte address, then a two-byte interface number
    IPV4,       ///< a four-byte address
    TEXT,       ///< a text of any length
    UPPER_TEXT, ///< a text that is shown in upper case
    NUMBER,     ///< a 32-bit number, shown in decimal
    HEX_NUMBER, ///< a 32-bit number, shown in hexadecimal
    PRODUCT,    ///< a two-byte platform identifier, then a two-byte product identifier
    OBSOLETE,   ///< no longer used; shown as a byte dump
    HIDDEN      ///< left out of the report
};

/// What the identifiers from `first` to `last` mean.
struct TagMeaning {
    TagId first;      ///< the lowest identifier
    TagId last;       ///< the highest identifier
    TagKind kind;     ///< how the data is read and shown
    unsigned size;    ///< the required number of data bytes; 0 if any length is valid
    bool isSingle;    ///< true if a second tag with the same identifier is a mistake
    const char* name; ///< null if the identifiers have no name
};

/// The identifiers that the library knows, in ascending order. On an ordinary Linux machine,
/// `TAG_ID_TO_STRING` returns these names, or "Tag<id>" for an identifier without a name. A board's
/// own framework may name more identifiers.
inline constexpr TagMeaning TAG_MEANINGS[] = {
    {1, 1, TagKind::MAC, 8, false, "MacAddress"},
    {2, 2, TagKind::IPV4, 4, true, nullptr},
    {3, 3, TagKind::HIDDEN, 0, true, nullptr},
    {4, 4, TagKind::IPV4, 4, true, nullptr},
    {5, 5, TagKind::TEXT, 0, true, nullptr},
    {6, 7, TagKind::HEX_NUMBER, 4, true, nullptr},
    {8, 8, TagKind::OBSOLETE, 0, true, nullptr},
    {9, 9, TagKind::HEX_NUMBER, 4, true, nullptr},
    {10, 13, TagKind::TEXT, 0, true, nullptr},
    {14, 14, TagKind::UPPER_TEXT, 0, true, nullptr},
    {15, 15, TagKind::TEXT, 0, true, nullptr},
    {16, 18, TagKind::NUMBER, 4, true, nullptr},
    {20, 21, TagKind::NUMBER, 4, true, nullptr},
    {22, 22, TagKind::UPPER_TEXT, 0, true, nullptr},
    {23, 25, TagKind::TEXT, 0, true, nullptr},
    {26, 27, TagKind::NUMBER, 4, true, nullptr},
    {28, 29, TagKind::HEX_NUMBER, 4, true, nullptr},
    {41, 43, TagKind::NUMBER, 4, true, nullptr},
    {44, 44, TagKind::TEXT, 0, true, nullptr},
    {45, 45, TagKind::PRODUCT, 4, true, "ProductID"},
    {46, 49, TagKind::TEXT, 0, true, nullptr},
    {50, 51, TagKind::HEX_NUMBER, 4, true, nullptr},
    {0x8000, 0x800B, TagKind::NUMBER, 4, true, nullptr},
    {0x800C, 0x800C, TagKind::HEX_NUMBER, 4, true, nullptr},
    {0x800D, 0x800D, TagKind::NUMBER, 4, true, nullptr},
    {0x800E, 0x800E, TagKind::NUMBER, 4, true, "DspChannels"},
    {0x800F, 0x8012, TagKind::NUMBER, 4, true, nullptr},
    {0x8013, 0x8014, TagKind::TEXT, 0, true, nullptr},
    {0x8015, 0x8015, TagKind::NUMBER, 4, true, nullptr},
    {0x8017, 0x8019, TagKind::NUMBER, 4, true, nullptr},
    {0x801A, 0x801A, TagKind::BYTES, 0, false, "SipLegs"},
};

/// The meaning of `id`. The data of an unknown identifier is of kind BYTES and may have any size;
/// such tags may be repeated.
constexpr TagMeaning meaningOf(TagId id) {
    for (const TagMeaning& meaning : TAG_MEANINGS)
        if (meaning.first <= id && id <= meaning.last)
            return meaning;
    return {id, id, TagKind::BYTES, 0, false, nullptr};
}

} // namespace BD
