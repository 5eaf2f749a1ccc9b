#pragma once

#include <cstdlib>
#include <iostream>
#include <string>

namespace fuzz {

/// Checks a promise of the headers. The fuzzer keeps any input that breaks it.
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
