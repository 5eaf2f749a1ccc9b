#pragma once

#include <cstdint>

#include "String.h"

namespace BD {

/// A board-descriptor tag's identifier: 32-bit signed in memory, 16 bits in the image.
using TagId = std::int32_t;

/// The name of a tag's identifier; "Tag<id>" if it has none.
String TAG_ID_TO_STRING(TagId id);

} // namespace BD
