#pragma once

#include <string>
#include <vector>

#include "descriptor/compare/ExpectedTag.h"

namespace board {

/// The tags that are expected, in their order.
struct ExpectedList {
    std::vector<ExpectedTag> tags;
    bool needsTerminator = true; ///< false for an image that has none itself
};

/// Whether `bytes` are meant as JSON and not as an image, which contains a zero byte or begins with
/// an erased byte (0xFF). False for no bytes.
bool isJsonList(const std::string& bytes);

/// Reads an image or a JSON list. Instead of a value, an entry of the JSON list may have a pattern:
/// `any` (true), `size` (bytes), `matches` (a regular expression on the whole text), or `from` and
/// `to` (addresses). An entry with `from` and `to` may also have `iface`. Throws Error if `bytes`
/// is empty, the image is corrupt or too large, the list has a mistake (see `tagsFromJson`), or
/// entries follow the terminator. Messages call the input `source`.
ExpectedList readExpected(const std::string& bytes, const std::string& source);

} // namespace board
