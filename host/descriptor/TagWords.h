#pragma once

#include <optional>
#include <string>

#include "BD_Tag.h"

namespace board {

class TagImage;

/// The tag that holds a unit's serial number as a text, by the convention of this project's boards.
constexpr BD::TagId SERIAL_TAG = 5;

/// The unit's serial number; empty if the image holds none, or one that can't be printed.
std::string serialOf(const TagImage& image);

/// The name of an identifier: "ProductID", or "Tag5" if it has none.
std::string tagName(BD::TagId id);

/// Names a tag by its identifier and its occurrence among the tags with that identifier, counted
/// from 0.
struct TagPlace {
    BD::TagId id = 0;
    unsigned index = 0;
};

/// How a tag's data is written and read. Numbers are big-endian; a `uint` is written as 4 bytes and
/// read from 1, 2 or 4. A `mac` is an address and an interface number in 8 bytes.
enum class TagType { U8, U16, U32, UINT, TEXT, HEX, MAC };

/// A tag and its new data.
struct Assignment {
    TagPlace place;
    bool hasIndex = false; ///< whether the word named an occurrence
    TString<char> data;
};

/// The identifier that `word` means, as a number or a name; empty if it means none.
std::optional<BD::TagId> findTagId(const std::string& word);

/// The parsers of command-line words below throw an Error that names the word and what was
/// expected.

/// "ID" or "ID.N"; ID is 1 to 65534, decimal or with 0x, or a tag's name; N is decimal.
TagPlace parseTagPlace(const std::string& word);

/// "ID=TYPE:VALUE" or "ID.N=TYPE:VALUE". Types are u8, u16, u32, uint (decimal or with 0x), text
/// (the bytes unchanged), hex (pairs of digits) and mac (ADDRESS/INTERFACE, such as
/// 02:00:00:00:00:07/3). Data that does not fit a chunk is rejected.
Assignment parseAssignment(const std::string& word);

/// What the assignment names, for messages: "tag 5.0", or "the address of interface 3" if it puts
/// an address without naming an occurrence.
std::string placeWords(const Assignment& assignment);

TagType parseTagType(const std::string& word);

/// Checks that `word` is a MAC address that a board may have: six groups of two hexadecimal digits
/// separated by colons; not multicast, broadcast or all zero. Returns the word unchanged.
std::string parseMac(const std::string& word);

/// Why no interface can have the address `mac`, such as "is all zero (expected ...)"; empty if an
/// interface can have it. `mac` is six groups as described for parseMac.
std::optional<std::string> faultOfAddress(const std::string& mac);

/// The six bytes of an address that parseMac has returned.
std::string macBytes(const std::string& mac);

/// The data of a MAC address tag: the six bytes of the address, then the interface number. `mac` is
/// an address that parseMac has returned; `interface` is at most 65535.
std::string macData(const std::string& mac, unsigned interface);

/// The lowest `width` bytes of `value`, the highest of them first. `width` is at most 4.
std::string bigEndian(unsigned value, unsigned width);

/// A decimal number, or a hexadecimal one with 0x, up to `maximum`; `what` names the number in the
/// message.
unsigned parseNumber(const std::string& word, unsigned maximum, const std::string& what);

/// Decodes pairs of hexadecimal digits and appends the bytes to `bytes`. Returns npos on success;
/// otherwise the position of the first character that is not a hexadecimal digit, or the length of
/// `digits` if the last pair has only one digit.
std::size_t decodeHex(const std::string& digits, std::string& bytes);

/// The data as pairs of lower-case hexadecimal digits without blanks.
std::string hexDigits(const BD::Tag& tag);

struct MacAddress {
    std::string mac; ///< "02:00:00:00:00:07", digits in upper case
    unsigned interface = 0;

    /// The value of an assignment with TYPE mac: "02:00:00:00:00:07/3".
    std::string word() const { return mac + "/" + std::to_string(interface); }
};
/// The address in the data; empty if the data is not 8 bytes long.
std::optional<MacAddress> macOf(const BD::Tag& tag);

/// The interface number by which `bd put` finds the address that it replaces; empty if the
/// assignment names an occurrence or is not an address.
std::optional<unsigned> interfaceToPut(const Assignment& assignment);

/// The data as text, without zero bytes at the end, because storing pads data of odd length with a
/// zero byte.
std::string textOf(const BD::Tag& tag);

} // namespace board
