#pragma once

#include <cstdint>

#include "String.h"

namespace BD {

/// The identifier of a tag: a signed number of 32 bits in memory, 16 bits in the image.
using TagId = std::int32_t;

/// The name of a tag's identifier; "Tag<id>" if the identifier has no name.
String TAG_ID_TO_STRING(TagId id);

} // namespace BD
