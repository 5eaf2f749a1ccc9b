#pragma once

#include <cstddef>
#include <string>

inline void put16(std::string& image, std::size_t value) {
    image += static_cast<char>(value >> 8 & 0xFFU);
    image += static_cast<char>(value & 0xFFU);
}

/// An image of 512 bytes with 40 tags such as a board has: addresses, numbers, texts. The last tag,
/// 0x800E, states 120 DSP channels.
inline std::string makeBoardImage() {
    std::string image;
    const auto add = [&](unsigned id, const std::string& data) {
        put16(image, id);
        put16(image, data.size() + 4);
        image += data;
    };
    for (unsigned i = 0; i < 9; ++i) {
        add(1, std::string("\x02\x00\x00\x00\x00\x07\x00\x01", 8));
        add(32768 + i, std::string("\0\0\0\x2A", 4));
        add(10 + i % 4, "sixteen letters.");
        add(6, std::string("\0\0\x12\x34", 4));
    }
    add(2, std::string("\xC0\xA8\0\1", 4));
    add(45, "\x12\x34\xAB\xCD");
    add(9, std::string("\0\0\0\1", 4));
    add(0x800E, std::string("\0\0\0\x78", 4));
    return image.append(512 - image.size(), '\xFF');
}
