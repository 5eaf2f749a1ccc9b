#pragma once

#include <cstddef>

/// The number of calls of `operator new` so far, including those by the loaded libraries.
std::size_t allocations();
