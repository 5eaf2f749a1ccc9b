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

/// What follows the terminator of a list: no load would find it on a board.
enum class TagsAfterEnd { REFUSED, KEPT };

/// The tags of such an array, exactly those listed. An entry needs an `id` and one value.
///
/// `id` is 1 to 65534, a name such as "ProductID", or 0 for the terminator, which has no data. The
/// value is `data` or `hex` (hexadecimal digits), `text`, `u8`, `u16`, `u32`, `uint` (4 bytes; each
/// a number, or a text such as "0x1f"), or `mac` with `iface`, the number of the interface. A
/// `length` is checked; a `name` must not be that of another `id`; `simulated` is ignored. Throws
/// Error that names the line, the entry, counted from 0, and what was expected there; messages call
/// the text `source`. An entry that makes the image exceed MAX_IMAGE_SIZE is a mistake, too.
std::vector<BD::Tag> tagsFromJson(const std::string& text, const std::string& source,
                                  TagsAfterEnd afterEnd = TagsAfterEnd::REFUSED);

} // namespace board
