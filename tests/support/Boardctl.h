#pragma once

#include <string>
#include <vector>

#include "support/Program.h"

namespace support {

/// Runs the program to its end. BOARDCTL is the path of the one that was built.
inline Outcome boardctl(std::vector<std::string> words) {
    words.insert(words.begin(), BOARDCTL);
    return Program(words).finish();
}

} // namespace support
