#include "BD_Tag.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <string>
#include <utility>

#include "ByteOrder.h"

namespace BD {

XCode Tag::setData(const TString<char>& bytes) {
    return setData(bytes.length() ? bytes.data() : "", bytes.length());
}

XCode Tag::setData(const char* bytes, unsigned n) {
    try {
        TString<char> copy(bytes, n); // copied first, because `bytes` may point into this tag
        data = std::move(copy);
        length = n;
    } catch (const std::bad_alloc&) {
        data = TString<char>();
        length = 0;
    }
    return XCode();
}

char Tag::getDataChar() const {
    return length == 1 ? data[0] : '\0';
}

unsigned short Tag::getDataUInt16() const {
    const char bytes[] = {data[0], data[1]};
    return length == 2 ? cntoh_uint16(bytes, 2) : static_cast<unsigned short>(0);
}

unsigned long Tag::getDataUInt32() const {
    const char bytes[] = {data[0], data[1], data[2], data[3]};
    return length == 4 ? cntoh_uint32(bytes, 4) : 0;
}

unsigned Tag::getDataUInt() const {
    switch (length) {
    case 1:
        return static_cast<unsigned char>(getDataChar());
    case 2:
        return getDataUInt16();
    case 4:
        return static_cast<unsigned>(getDataUInt32());
    default:
        return 0;
    }
}

String& Tag::getDataString(String& out) const {
    out = String(data.data(), std::min(length, data.length()));
    return out;
}

String& Tag::getDataAsHexString(String& out) const {
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string pairs;
    pairs.reserve(3 * std::size_t{data.length()});
    for (unsigned i = 0; i < data.length(); ++i) {
        const auto byte = static_cast<unsigned char>(data[i]);
        if (i > 0)
            pairs += ' ';
        pairs += DIGITS[byte >> 4];
        pairs += DIGITS[byte & 0xFU];
    }
    return out = String(pairs.data(), static_cast<unsigned>(pairs.size()));
}

} // namespace BD
