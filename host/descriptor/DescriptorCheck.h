#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "BD_Tag.h"

namespace board {

/// One thing to know about an image.
struct Finding {
    enum class Weight {
        CORRUPT, ///< the image can't be loaded whole
        WARNING, ///< it loads, but probably not as meant
        NOTE     ///< nothing is wrong
    };
    Weight weight;
    std::size_t offset; ///< in bytes from the image's start
    std::string text;
};

struct CheckedImage {
    std::size_t tags = 0;          ///< that load, without the terminator
    std::size_t usedBytes = 0;     ///< that they take, with the terminator
    std::vector<Finding> findings; ///< by offset
    bool isCorrupt = false;
};

/// Looks at every byte of an image. On a device, what lies behind the terminator was left there by
/// a longer image and is only noted.
CheckedImage checkImage(const std::string& bytes, bool isDevice);

/// "2 bytes (expected 4)" where the tag's identifier has a meaning that needs another size; else
/// empty.
std::string wrongSizeOf(const BD::Tag& tag);

} // namespace board
