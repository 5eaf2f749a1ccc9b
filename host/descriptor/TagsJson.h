#pragma once

#include <string>

#include "CBoardDescr.h"

namespace board {

/// The tags as a JSON array, an entry a line, in list order:
/// `{"id":45,"name":"ProductID","length":4,"data":"1234abcd"}`. Data is hexadecimal.
std::string tagsToJson(const CBoardDescr::TagList& tags);

/// Appends the tags of such an array to `descriptor`, exactly those given. Of an entry, `id` (1 to
/// 65534, or 0 for the terminator, which has no data) and `data` count, `length` is checked where
/// it stands, `name` is for people. Throws Error that names the entry, counted from 0, and what was
/// expected there; `source` is what the text is called in it.
void tagsFromJson(const std::string& text, const std::string& source, CBoardDescr& descriptor);

} // namespace board
