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
        ORDER,      ///< a tag is in another place than expected among the others
        TERMINATOR, ///< nothing ends the tags
        CORRUPT     ///< the image can't be loaded whole
    };
    Kind kind;
    BD::TagId id = TERMINATOR_TAG;
    unsigned index = 0; ///< which tag with this identifier: of the expected ones, or, for an extra
                        ///< tag, of the image's
    std::optional<std::size_t> offset; ///< in the image; empty if the tag is missing
    std::string expected; ///< as hexadecimal digits, or words for a pattern; empty if none is
    std::string found;    ///< as hexadecimal digits; empty if the tag is missing
    std::string text;     ///< the whole difference for people, on one line
};

/// The differences: expected tags in their order, then extra ones, then the end of the image. None
/// if the image has the expected tags in the expected order and, if needed, a terminator; what
/// follows the terminator does not count.
///
/// The N-th tag with an identifier is compared with the N-th expected one. If they differ, an equal
/// tag with the same identifier elsewhere counts as moved.
std::vector<TagDifference> compareTags(const ExpectedList& expected, const TagImage& found);

} // namespace board
