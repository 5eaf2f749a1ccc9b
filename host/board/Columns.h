#pragma once

#include <cstddef>
#include <string>

namespace board {

/// How many columns UTF-8 takes on a screen, at one a character.
inline std::size_t columnsOf(const std::string& text) {
    std::size_t columns = 0;
    for (const char c : text)
        columns += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U ? 1 : 0; // but for bytes that go on
    return columns;
}

} // namespace board
