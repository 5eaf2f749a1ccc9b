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

/// A profile with one fan.
inline std::string fanProfile(const std::string& device) {
    return "[[fan]]\nname = \"fan\"\ndevice = \"" + device +
           "\"\ndescription = \"Main fan\"\nmaximum = 255\n";
}

} // namespace support
