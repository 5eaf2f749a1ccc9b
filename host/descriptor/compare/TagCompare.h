#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "descriptor/TagImage.h"
#include "descriptor/compare/ExpectedList.h"

namespace board {

/// One difference between the expected tags and those of an image.
struct TagDifference {
    enum class Kind {
        MISSING,    ///< an expected tag is not there
        EXTRA,      ///< a tag is not expected
        DIFFERENT,  ///< a tag does not have the expected value
        ORDER,      ///< a tag is not in the expected order among the others
        TERMINATOR, ///< the tags have no terminator
        CORRUPT     ///< the image can't be loaded whole
    };
    Kind kind;
    BD::TagId id = TERMINATOR_TAG;
    unsigned index = 0; ///< which of the expected tags with this identifier; for an extra tag,
                        ///< which of those in the image
    std::optional<std::size_t> offset; ///< in the image; empty if the tag is missing
    std::string expected; ///< hexadecimal digits or a pattern in words; empty if no tag is expected
    std::string found;    ///< hexadecimal digits; empty if the tag is missing
    std::string text;     ///< the whole difference for people, on one line
};

/// Returns the differences of the expected tags in their order, then the extra tags, and last
/// corruption or a missing terminator at the end of the tags. The result is empty if the image has
/// the expected tags in the expected order and, if needed, a terminator. Bytes after the terminator
/// are ignored.
///
/// The N-th tag with an identifier is compared with the N-th expected one. If they differ, an equal
/// tag with the same identifier elsewhere counts as moved.
std::vector<TagDifference> compareTags(const ExpectedList& expected, const TagImage& found);

} // namespace board
