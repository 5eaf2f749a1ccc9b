#include "base/Text.h"

namespace board {

namespace {

/// The length in bytes of the printable UTF-8 character at `position`; 0 for a control character, a
/// character that changes the text's direction, a line separator or an invalid sequence.
std::size_t printableBytes(const std::string& text, std::size_t position) {
    const auto byteAt = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned lead = byteAt(position);
    if (lead < 0x80)
        return lead >= 0x20 && lead != 0x7F ? 1 : 0;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4)
        return 0;
    unsigned long code = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(position + i) & 0xC0U) != 0x80)
            return 0;
        code = code << 6 | (byteAt(position + i) & 0x3FU);
    }
    // Smaller codes of the same length are overlong forms or C1 controls.
    constexpr unsigned long LEAST[] = {0, 0, 0xA0, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    const bool isSeparator = code == 0x2028 || code == 0x2029;
    // These change the order in which the text around them is shown, which may mislead a reader.
    const bool isDirection = code == 0x61C || code == 0x200E || code == 0x200F ||
                             (code >= 0x202A && code <= 0x202E) ||
                             (code >= 0x2066 && code <= 0x2069);
    const bool isCharacter = (code & 0xFFFE) != 0xFFFE;
    const bool isLegal = code >= LEAST[length] && code <= 0x10FFFF && isCharacter && !isSurrogate;
    return isLegal && !isSeparator && !isDirection ? length : 0;
}

} // namespace

std::string printable(const std::string& text) {
    constexpr char HEX[] = "0123456789abcdef";
    std::string shown;
    for (std::size_t i = 0; i < text.size();) {
        if (const std::size_t bytes = printableBytes(text, i)) {
            shown.append(text, i, bytes);
            i += bytes;
        } else {
            const auto byte = static_cast<unsigned char>(text[i++]);
            shown += {'\\', 'x', HEX[byte >> 4], HEX[byte & 0xF]};
        }
    }
    return shown;
}

std::size_t columnsOf(const std::string& text) {
    std::size_t columns = 0;
    for (const char c : text) {
        const bool isContinuation = (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
        columns += isContinuation ? 0 : 1;
    }
    return columns;
}

bool isDigits(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

std::string joinChoices(const std::vector<std::string>& words) {
    std::string joined;
    for (const std::string& word : words)
        joined += (joined.empty() ? "" : &word == &words.back() ? " or " : ", ") + word;
    return joined;
}

std::string folderOf(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1); // without a slash, npos + 1 is 0
}

std::string fileNameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

} // namespace board
