#include "descriptor/TagWords.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "base/Error.h"
#include "base/Suggestion.h"

namespace board {

namespace {

constexpr BD::TagId MAC_TAG = 1;
constexpr BD::TagId LAST_ID = 65534;
constexpr std::size_t MAX_DATA_BYTES = 65530; // a chunk's 16-bit length, less its header, made even
constexpr char TYPES[] = "u8, u16, u32, uint, text or hex";

/// A word for a message: short, and without bytes that a terminal would obey.
std::string quoted(const std::string& word) {
    constexpr std::size_t LONGEST = 40;
    std::string shown = word.substr(0, LONGEST);
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return "'" + shown + (word.size() > LONGEST ? "...'" : "'");
}

/// Whether `word` is nothing but a number up to `maximum`, which is then in `number`.
bool readNumber(const std::string& word, unsigned maximum, unsigned& number) {
    const bool isHex = word.size() > 2 && word[0] == '0' && (word[1] == 'x' || word[1] == 'X');
    const int base = isHex ? 16 : 10;
    std::uint64_t value = 0;
    for (std::size_t i = isHex ? 2 : 0; i < word.size(); ++i) {
        const int digit = digitOf(word[i]);
        if (digit < 0 || digit >= base)
            return false;
        value = value * static_cast<unsigned>(base) + static_cast<unsigned>(digit);
        if (value > maximum)
            return false;
    }
    number = static_cast<unsigned>(value);
    return !word.empty();
}

BD::TagId parseId(const std::string& word) {
    unsigned number = 0;
    if (readNumber(word, static_cast<unsigned>(LAST_ID), number) && number != 0)
        return static_cast<BD::TagId>(number);
    // Names belong to the framework, which goes from identifier to name only.
    const String name(word.c_str());
    std::vector<std::string> known;
    for (BD::TagId id = 1; id <= LAST_ID; ++id) {
        const String its = BD::TAG_ID_TO_STRING(id);
        if (its == name)
            return id;
        if (!its.startsWith("Tag")) // the names of the others are their numbers
            known.emplace_back(its.c_str());
    }
    throw Error(quoted(word) +
                " names no tag (expected 1 to 65534, 0x1 to 0xfffe, or a name such as ProductID)" +
                didYouMean(word, known));
}

TString<char> bigEndian(unsigned value, unsigned width) {
    TString<char> bytes;
    for (unsigned i = width; i-- > 0;) {
        const char byte = static_cast<char>(value >> (8 * i) & 0xFFU);
        bytes.concat(&byte, 1);
    }
    return bytes;
}

TString<char> bytesOfHex(const std::string& digits) {
    TString<char> bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const int high = digitOf(digits[i]);
        const int low = i + 1 < digits.size() ? digitOf(digits[i + 1]) : -1;
        if (high < 0 || low < 0)
            throw Error(quoted(digits) + " is not hexadecimal at character " +
                        std::to_string(high < 0 ? i : i + 1) +
                        " (expected two digits for each byte)");
        const char byte = static_cast<char>(high << 4 | low);
        bytes.concat(&byte, 1);
    }
    return bytes;
}

TString<char> dataOf(TagType type, const std::string& value) {
    switch (type) {
    case TagType::U8:
        return bigEndian(parseNumber(value, UINT8_MAX, "u8 value"), 1);
    case TagType::U16:
        return bigEndian(parseNumber(value, UINT16_MAX, "u16 value"), 2);
    case TagType::U32:
    case TagType::UINT:
        return bigEndian(parseNumber(value, UINT32_MAX, "32-bit value"), 4);
    case TagType::TEXT:
        return TString<char>(value.data(), static_cast<unsigned>(value.size()));
    case TagType::HEX:
        break;
    }
    return bytesOfHex(value);
}

} // namespace

unsigned parseNumber(const std::string& word, unsigned maximum, const std::string& what) {
    unsigned number = 0;
    if (!readNumber(word, maximum, number))
        throw Error(what + " " + quoted(word) + " is no number from 0 to " +
                    std::to_string(maximum) +
                    " (expected decimal digits, or hexadecimal ones with 0x)");
    return number;
}

TagPlace parseTagPlace(const std::string& word) {
    const auto dot = word.rfind('.');
    TagPlace place;
    place.id = parseId(word.substr(0, dot));
    if (dot != std::string::npos)
        place.index = parseNumber(word.substr(dot + 1), UINT16_MAX, "occurrence");
    return place;
}

TagType parseTagType(const std::string& word) {
    constexpr const char* WORDS[] = {"u8",   "u16",  "u32",
                                     "uint", "text", "hex"}; // in the order of TagType
    for (std::size_t i = 0; i < std::size(WORDS); ++i)
        if (word == WORDS[i])
            return static_cast<TagType>(i);
    throw Error("type " + quoted(word) + " is unknown (expected " + TYPES + ")" +
                didYouMean(word, {std::begin(WORDS), std::end(WORDS)}));
}

Assignment parseAssignment(const std::string& word) {
    const auto equals = word.find('=');
    const auto colon = word.find(':', equals == std::string::npos ? 0 : equals);
    if (equals == std::string::npos || colon == std::string::npos)
        throw Error(quoted(word) +
                    " is no assignment (expected ID=TYPE:VALUE, such as ProductID=hex:1234abcd)");
    Assignment assignment;
    const std::string tag = word.substr(0, equals);
    assignment.place = parseTagPlace(tag);
    assignment.hasIndex = tag.find('.') != std::string::npos;
    try {
        assignment.data = dataOf(parseTagType(word.substr(equals + 1, colon - equals - 1)),
                                 word.substr(colon + 1));
    } catch (const Error& error) {
        throw Error("tag " + quoted(tag) + ": " + error.what() +
                    (assignment.place.id == MAC_TAG ? "; `boardctl bd mac` writes addresses" : ""));
    }
    const std::size_t size = assignment.data.length();
    if (size > MAX_DATA_BYTES)
        throw Error("tag " + quoted(tag) + ": " + std::to_string(size) +
                    " bytes are too long for a chunk (expected at most " +
                    std::to_string(MAX_DATA_BYTES) + ")");
    return assignment;
}

std::string parseMac(const std::string& word) {
    constexpr std::size_t GROUPS = 6;
    bool isWellFormed = word.size() == 3 * GROUPS - 1;
    bool isZero = true;
    for (std::size_t i = 0; isWellFormed && i < word.size(); ++i) {
        isWellFormed = i % 3 == 2 ? word[i] == ':' : digitOf(word[i]) >= 0;
        isZero = isZero && (word[i] == '0' || word[i] == ':');
    }
    if (!isWellFormed)
        throw Error(quoted(word) +
                    " is no MAC address (expected six groups of two hexadecimal digits, "
                    "such as 02:00:00:00:00:07)");
    // The lowest bit of the first byte; broadcast has it too.
    if (digitOf(word[1]) % 2 != 0)
        throw Error(quoted(word) +
                    " is a multicast or broadcast address (expected that of one interface)");
    if (isZero)
        throw Error(quoted(word) + " is all zero (expected the address of an interface)");
    return word;
}

int digitOf(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

std::string hexDigits(const BD::Tag& tag) {
    String dump;
    std::string digits = tag.getDataAsHexString(dump).c_str();
    digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
    return digits;
}

String textOf(const BD::Tag& tag) {
    unsigned length = tag.data.length();
    while (length > 0 && tag.data[length - 1] == '\0')
        --length;
    return String(tag.data.data(), length);
}

} // namespace board
