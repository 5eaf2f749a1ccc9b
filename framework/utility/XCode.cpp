#include "XCode.h"

#include <utility>

#include "String.h"

struct XCode::Record {
    std::int32_t code;
    String message;
};

namespace {

constexpr std::int32_t INLINE_MIN = -(1 << 30);
constexpr std::int32_t INLINE_MAX = (1 << 30) - 1;

// The code is widened as a signed number first, so that code -1 becomes a word with all bits set on
// 64-bit machines too. The shift is unsigned, because shifting a negative number is undefined.
std::uintptr_t inlineWord(std::int32_t code) {
    return (static_cast<std::uintptr_t>(static_cast<std::intptr_t>(code)) << 1) | 1U;
}

} // namespace

XCode::Record* XCode::record() const noexcept {
    // The word holds either a code or a pointer.
    return reinterpret_cast<Record*>(m_word); // NOLINT(performance-no-int-to-ptr)
}

XCode::XCode(std::int32_t code)
    : m_word(code >= INLINE_MIN && code <= INLINE_MAX
                 ? inlineWord(code)
                 : reinterpret_cast<std::uintptr_t>(new Record{code, String()})) {}

XCode::XCode(std::int32_t code, const String& message)
    : m_word(reinterpret_cast<std::uintptr_t>(new Record{code, message})) {}

XCode::XCode(const XCode& other)
    : m_word(other.isInline() ? other.m_word
                              : reinterpret_cast<std::uintptr_t>(new Record(*other.record()))) {}

XCode::XCode(XCode&& other) noexcept : m_word(std::exchange(other.m_word, 1)) {}

XCode& XCode::operator=(const XCode& other) {
    return *this = XCode(other);
}

XCode& XCode::operator=(XCode&& other) noexcept {
    std::swap(m_word, other.m_word);
    return *this;
}

void XCode::dropRecord() noexcept {
    delete record();
}

std::int32_t XCode::getCode() const noexcept {
    if (!isInline())
        return record()->code;
    // Undo the shift and keep the sign. The low 32 bits of the word are enough, because an inline
    // code has at most 31 bits.
    const auto shifted = static_cast<std::int32_t>(static_cast<std::uint32_t>(m_word));
    return (shifted - 1) / 2;
}

const String& XCode::getMessage() const noexcept {
    return isInline() ? String::EMPTY() : record()->message;
}
