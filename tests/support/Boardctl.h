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

/// A profile with one fan.
inline std::string fanProfile(const std::string& device) {
    return "[[fan]]\nname = \"fan\"\ndevice = \"" + device +
           "\"\ndescription = \"Main fan\"\nmaximum = 255\n";
}

} // namespace support
