#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "descriptor/TagImage.h"

namespace board {

/// The longest JSON text that the commands read as a list of tags: 16 MiB.
constexpr std::size_t MAX_TAGS_JSON = std::size_t{16} * 1024 * 1024;

/// The tags that an image loads as a JSON array, one entry per line, terminator included:
/// `{"id":45,"name":"ProductID","length":4,"data":"1234abcd"}`. Data is hexadecimal. Each entry of
/// a simulated board's image also has `"simulated":true`.
std::string tagsToJson(const TagImage& image, bool isSimulated = false);

/// What to do with entries after the terminator of a list. On a board, no load would read them.
enum class TagsAfterEnd { REFUSED, KEPT };

/// The tags listed in such an array; no terminator is added. An entry needs an `id` and one value.
///
/// `id` is 1 to 65534, a name such as "ProductID", or 0 for the terminator, which has no data. The
/// value is `data` or `hex` (hexadecimal digits), `text`, one of `u8`, `u16`, `u32` and `uint` (4
/// bytes), or `mac` with `iface`, the number of the interface. A number is a JSON number or a text
/// such as "0x1f". A `length` is checked; a `name` must not be that of another `id`; `simulated` is
/// ignored. Throws an Error that names the line, the entry (counted from 0) and what was expected;
/// messages call the text `source`. An entry that makes the image exceed MAX_IMAGE_SIZE is also an
/// error.
std::vector<BD::Tag> tagsFromJson(const std::string& text, const std::string& source,
                                  TagsAfterEnd afterEnd = TagsAfterEnd::REFUSED);

} // namespace board
