#pragma once

#include <cstddef>

/// The number of calls of `new` so far, including those in the loaded libraries.
std::size_t allocations();
