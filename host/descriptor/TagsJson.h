#pragma once

#include <string>
#include <vector>

#include "descriptor/TagImage.h"

namespace board {

/// The tags that an image loads as a JSON array, one entry per line, terminator included:
/// `{"id":45,"name":"ProductID","length":4,"data":"1234abcd"}`. Data is hexadecimal. Each entry of
/// a simulated board's image also has `"simulated":true`.
std::string tagsToJson(const TagImage& image, bool isSimulated = false);

/// The tags of such an array, exactly those listed. An entry needs `id` (1 to 65534, or 0 for the
/// terminator, which has no data) and `data`. A `length` is checked; `name` and `simulated` are
/// ignored. Throws Error that names the entry, counted from 0, and what was expected there;
/// messages call the text `source`.
std::vector<BD::Tag> tagsFromJson(const std::string& text, const std::string& source);

} // namespace board
