#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "descriptor/TagImage.h"
#include "descriptor/TagWords.h"

namespace board {

/// One finding about an image.
struct Finding {
    enum class Weight {
        CORRUPT, ///< the image can't be loaded whole
        WARNING, ///< the image loads, but this is probably a mistake
        BLANK,   ///< the image is erased or zeroed: right for a new board, wrong for one in use
        NOTE     ///< nothing is wrong
    };
    Weight weight;
    std::size_t offset; ///< in bytes from the start of the image
    std::string text;
};

/// Checks every byte of an image; the findings are ordered by offset. On a device, bytes after the
/// terminator are only a note: an earlier, longer image may have left them there. There is a
/// warning for each tag in `required` that is missing (at `usedBytes()`) or empty (at its own
/// offset).
std::vector<Finding> checkImage(const TagImage& image, bool isDevice,
                                const std::vector<TagPlace>& required = {});

/// "2 bytes (expected 4)" if the tag's identifier has a meaning that needs another size;
/// otherwise empty.
std::optional<std::string> wrongSizeOf(const BD::Tag& tag);

} // namespace board
