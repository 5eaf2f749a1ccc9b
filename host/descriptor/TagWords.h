#pragma once

#include <string>

#include "BD_Tag.h"

namespace board {

/// A tag as people name it: its identifier, and which of several with that identifier, counted from
/// 0.
struct TagPlace {
    BD::TagId id = 0;
    unsigned index = 0;
};

/// What a tag's data is made from, and read as. Numbers are big-endian; `uint` is written with 4
/// bytes and read from 1, 2 or 4.
enum class TagType { U8, U16, U32, UINT, TEXT, HEX };

/// A tag and the data it shall hold.
struct Assignment {
    TagPlace place;
    bool hasIndex = false; ///< whether the word said which of several
    TString<char> data;
};

/// These take a word of the command line and throw Error with the word and what was expected where
/// it is something else.

/// "ID" or "ID.N"; ID is 1 to 65534, decimal or with 0x, or a tag's name, N is decimal.
TagPlace parseTagPlace(const std::string& word);

/// "ID=TYPE:VALUE" or "ID.N=TYPE:VALUE". Types are u8, u16, u32, uint (decimal or with 0x), text
/// (the bytes as they are) and hex (pairs of digits). Data that does not fit a chunk is refused.
Assignment parseAssignment(const std::string& word);

TagType parseTagType(const std::string& word);

/// An address that a board may have: six groups of two hexadecimal digits parted by colons; neither
/// multicast nor broadcast nor all zero. Comes back as it was.
std::string parseMac(const std::string& word);

/// A decimal number, or a hexadecimal one with 0x, up to `maximum`; `what` names it in the message.
unsigned parseNumber(const std::string& word, unsigned maximum, const std::string& what);

/// The value of a hexadecimal digit; -1 for any other character.
int digitOf(char c);

/// The data as pairs of lower-case hexadecimal digits without blanks.
std::string hexDigits(const BD::Tag& tag);

/// The data as a text, without the zero bytes at its end: storing adds one to an odd length.
String textOf(const BD::Tag& tag);

} // namespace board
