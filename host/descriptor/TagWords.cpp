#include "descriptor/TagWords.h"

#include <algorithm>
#include <cstdint>

#include "BD_TagMeaning.h"
#include "base/Error.h"
#include "base/Suggestion.h"
#include "base/Text.h"
#include "descriptor/TagImage.h"

namespace board {

namespace {

constexpr BD::TagId LAST_ID = 65534;

/// A word for a message: short, and without bytes that a terminal would interpret.
std::string quoted(const std::string& word) {
    constexpr std::size_t LONGEST = 40;
    return "'" + printable(word.substr(0, LONGEST)) + (word.size() > LONGEST ? "...'" : "'");
}

/// The value of a hexadecimal digit; -1 for any other character.
int digitOf(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

/// Whether all of `word` is a number up to `maximum`, which is then stored in `number`.
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

bool readId(const std::string& word, BD::TagId& id) {
    unsigned number = 0;
    if (!readNumber(word, static_cast<unsigned>(LAST_ID), number) || number == 0)
        return false;
    id = static_cast<BD::TagId>(number);
    return true;
}

BD::TagId parseId(const std::string& word) {
    if (const auto id = findTagId(word))
        return *id;
    std::vector<std::string> names;
    for (const BD::TagMeaning& meaning : BD::TAG_MEANINGS)
        if (meaning.name)
            names.emplace_back(meaning.name);
    throw Error(quoted(word) +
                " is not a tag (expected 1 to 65534, 0x1 to 0xfffe, or a name such as ProductID)" +
                didYouMean(word, names));
}

std::string bytesOfHex(const std::string& digits) {
    std::string bytes;
    if (const std::size_t wrong = decodeHex(digits, bytes); wrong != std::string::npos)
        throw Error(quoted(digits) + " is not hexadecimal at character " + std::to_string(wrong) +
                    " (expected two digits for each byte)");
    return bytes;
}

/// The data of a MAC address tag for the value "ADDRESS/INTERFACE".
std::string macDataOf(const std::string& value) {
    const auto slash = value.find('/');
    const std::string mac = parseMac(value.substr(0, slash));
    if (slash == std::string::npos)
        throw Error(quoted(value) + " has no interface number (expected one after the address, "
                                    "such as 02:00:00:00:00:07/3)");
    return macData(mac, parseNumber(value.substr(slash + 1), UINT16_MAX, "interface number"));
}

std::string dataOf(TagType type, const std::string& value) {
    switch (type) {
    case TagType::U8:
        return bigEndian(parseNumber(value, UINT8_MAX, "u8 value"), 1);
    case TagType::U16:
        return bigEndian(parseNumber(value, UINT16_MAX, "u16 value"), 2);
    case TagType::U32:
    case TagType::UINT:
        return bigEndian(parseNumber(value, UINT32_MAX, "32-bit value"), 4);
    case TagType::TEXT:
        return value;
    case TagType::MAC:
        return macDataOf(value);
    case TagType::HEX:
        break;
    }
    return bytesOfHex(value);
}

} // namespace

unsigned parseNumber(const std::string& word, unsigned maximum, const std::string& what) {
    unsigned number = 0;
    if (!readNumber(word, maximum, number))
        throw Error(what + " " + quoted(word) + " is not a number from 0 to " +
                    std::to_string(maximum) +
                    " (expected decimal digits, or hexadecimal ones with 0x)");
    return number;
}

std::string tagName(BD::TagId id) {
    return BD::TAG_ID_TO_STRING(id).c_str();
}

std::optional<BD::TagId> findTagId(const std::string& word) {
    BD::TagId id = 0;
    if (readId(word, id))
        return id;
    for (const BD::TagMeaning& meaning : BD::TAG_MEANINGS)
        if (meaning.name && word == meaning.name)
            return meaning.first;
    // Output calls an identifier without a name "Tag5", so users may type that too.
    if (word.rfind("Tag", 0) == 0 && readId(word.substr(3), id) && tagName(id) == word)
        return id;
    return std::nullopt;
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
    const std::vector<std::string> words = {"u8",   "u16", "u32", "uint",
                                            "text", "hex", "mac"}; // in the order of TagType
    const auto found = std::find(words.begin(), words.end(), word);
    if (found != words.end())
        return static_cast<TagType>(found - words.begin());
    throw Error("type " + quoted(word) + " is unknown (expected " + joinChoices(words) + ")" +
                didYouMean(word, words));
}

Assignment parseAssignment(const std::string& word) {
    const auto equals = word.find('=');
    const auto colon = word.find(':', equals == std::string::npos ? 0 : equals);
    if (equals == std::string::npos || colon == std::string::npos)
        throw Error(
            quoted(word) +
            " is not an assignment (expected ID=TYPE:VALUE, such as ProductID=hex:1234abcd)");
    Assignment assignment;
    const std::string tag = word.substr(0, equals);
    assignment.place = parseTagPlace(tag);
    assignment.hasIndex = tag.find('.') != std::string::npos;
    try {
        const std::string data = dataOf(parseTagType(word.substr(equals + 1, colon - equals - 1)),
                                        word.substr(colon + 1));
        assignment.data = TString<char>(data.data(), static_cast<unsigned>(data.size()));
    } catch (const Error& error) {
        throw Error("tag " + quoted(tag) + ": " + error.what() +
                    (assignment.place.id == MAC_TAG
                         ? "; an address is written as MacAddress=mac:02:00:00:00:00:07/3"
                         : ""));
    }
    const std::size_t size = assignment.data.length();
    if (size > MAX_TAG_DATA)
        throw Error("tag " + quoted(tag) + ": " + std::to_string(size) +
                    " bytes are too long for a chunk (expected at most " +
                    std::to_string(MAX_TAG_DATA) + ")");
    return assignment;
}

std::string parseMac(const std::string& word) {
    constexpr std::size_t GROUPS = 6;
    bool isWellFormed = word.size() == 3 * GROUPS - 1;
    for (std::size_t i = 0; isWellFormed && i < word.size(); ++i)
        isWellFormed = i % 3 == 2 ? word[i] == ':' : digitOf(word[i]) >= 0;
    if (!isWellFormed)
        throw Error(quoted(word) +
                    " is not a MAC address (expected six groups of two hexadecimal digits, "
                    "such as 02:00:00:00:00:07)");
    if (const auto fault = faultOfAddress(word))
        throw Error(quoted(word) + " " + *fault);
    return word;
}

std::optional<std::string> faultOfAddress(const std::string& mac) {
    // The lowest bit of the first byte marks a multicast address. The broadcast address has it set
    // too.
    if (digitOf(mac[1]) % 2 != 0)
        return "is a multicast or broadcast address (expected the address of one interface)";
    if (mac.find_first_not_of("0:") == std::string::npos)
        return "is all zero (expected the address of an interface)";
    return std::nullopt;
}

std::string bigEndian(unsigned value, unsigned width) {
    std::string bytes;
    for (unsigned i = width; i-- > 0;)
        bytes += static_cast<char>(value >> (8 * i) & 0xFFU);
    return bytes;
}

std::string macBytes(const std::string& mac) {
    std::string digits = mac;
    digits.erase(std::remove(digits.begin(), digits.end(), ':'), digits.end());
    return bytesOfHex(digits);
}

std::string macData(const std::string& mac, unsigned interface) {
    return macBytes(mac) + bigEndian(interface, 2);
}

std::size_t decodeHex(const std::string& digits, std::string& bytes) {
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const int high = digitOf(digits[i]);
        const int low = i + 1 < digits.size() ? digitOf(digits[i + 1]) : -1;
        if (high < 0 || low < 0)
            return high < 0 ? i : i + 1;
        bytes += static_cast<char>(high << 4 | low);
    }
    return std::string::npos;
}

std::string hexDigits(const BD::Tag& tag) {
    String dump;
    std::string digits = tag.getDataAsHexString(dump).c_str();
    digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
    return digits;
}

std::optional<MacAddress> macOf(const BD::Tag& tag) {
    String mac;
    unsigned interface = 0;
    if (!CBoardDescr().getMacAddr(tag, mac, interface).isSuccess())
        return std::nullopt;
    return MacAddress{mac.c_str(), interface};
}

std::string serialOf(const TagImage& image) {
    for (const ImageTag& each : image.tags())
        if (each.tag.id == SERIAL_TAG) {
            std::string text = textOf(each.tag);
            return printable(text) == text ? text : "";
        }
    return "";
}

std::optional<unsigned> interfaceToPut(const Assignment& assignment) {
    BD::Tag tag(assignment.place.id);
    static_cast<void>(tag.setData(assignment.data)); // always succeeds
    const auto address = tag.id == MAC_TAG && !assignment.hasIndex ? macOf(tag) : std::nullopt;
    return address ? std::optional(address->interface) : std::nullopt;
}

std::string placeWords(const Assignment& assignment) {
    if (const auto interface = interfaceToPut(assignment))
        return "the address of interface " + std::to_string(*interface);
    const auto& [id, index] = assignment.place;
    return "tag " + std::to_string(id) + "." + std::to_string(index);
}

std::string textOf(const BD::Tag& tag) {
    std::string text(tag.data.data(), tag.data.length());
    text.erase(text.find_last_not_of('\0') + 1);
    return text;
}

} // namespace board
