#pragma once

#include <cstddef>

/// How often this program has taken memory by `new` so far, the libraries that it loads included.
std::size_t allocations();
