#pragma once

#include <cstdlib>

#include "XCode.h"

/// Aborts on failure: a benchmark of a failing operation measures nothing.
inline void succeed(const XCode& status) {
    if (!status.isSuccess())
        std::abort();
}
