#pragma once

#include <string>

#include "profile/Profile.h"
#include "support/TempDir.h"

/// LED tables of board profiles.
namespace support {

inline board::Profile profileOf(const std::string& text) {
    const TempDir dir;
    dir.write("board.toml", text);
    return board::Profile::load(dir.path("board.toml"));
}

inline board::LedSequencerProfile ledsOf(const std::string& text) {
    return profileOf(text).ledService.value();
}

/// A row of the command table as profile text: `words` are its two words, `rest` its other keys.
inline std::string row(const std::string& words, const std::string& rest) {
    const auto blank = words.find(' ');
    return "[[leds.command]]\nword1 = '" + words.substr(0, blank) + "'\nword2 = '" +
           words.substr(blank + 1) + "'\n" + rest + "\n";
}

inline const std::string FILES = "[[leds.file]]\nmask = 0x80000000\npath = "
                                 "'high'\n[[leds.file]]\nmask = 3\npath = 'sys/pair/brightness'\n"
                                 "[[leds.file]]\nmask = 1\npath = 'led:one'\n";

} // namespace support
