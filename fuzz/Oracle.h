#pragma once

#include <cstdlib>
#include <iostream>
#include <string>

namespace fuzz {

/// A promise of the headers; the fuzzer keeps the input for which it does not hold.
inline void expect(bool holds, const char* promise) {
    if (holds)
        return;
    std::cerr << "broken: " << promise << "\n";
    std::abort();
}

inline std::string textOf(const std::uint8_t* bytes, std::size_t size) {
    return std::string(reinterpret_cast<const char*>(bytes), size);
}

} // namespace fuzz
