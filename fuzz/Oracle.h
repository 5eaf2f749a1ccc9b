#pragma once

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

namespace fuzz {

/// Counts what is compared with a model, and prints the count when the program ends.
class Count {
public:
    ~Count() { std::cerr << m_count << " results compared\n"; }
    void add() { ++m_count; }

private:
    std::uint64_t m_count = 0;
};

/// Checks a promise of the headers. The fuzzer keeps any input that breaks it.
inline void expect(bool holds, const char* promise) {
    static Count count;
    count.add();
    if (holds)
        return;
    std::cerr << "broken: " << promise << "\n";
    std::abort();
}

inline std::string textOf(const std::uint8_t* bytes, std::size_t size) {
    return std::string(reinterpret_cast<const char*>(bytes), size);
}

} // namespace fuzz
