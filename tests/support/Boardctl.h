#pragma once

#include <string>
#include <vector>

#include "support/Program.h"

namespace support {

/// Runs boardctl and waits until it ends. BOARDCTL is the path of the built program.
inline Outcome boardctl(std::vector<std::string> words) {
    words.insert(words.begin(), BOARDCTL);
    return Program(words).finish();
}

} // namespace support
