// Replaces the fuzzer if the compiler has none: runs the target once with an empty input and once
// for each file of the corpus.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

int main(int, char** arguments) {
    LLVMFuzzerTestOneInput(nullptr, 0);
    for (const auto& file : std::filesystem::directory_iterator(arguments[1])) {
        std::cerr << file.path().string() << "\n"; // if the target aborts, the last file caused it
        std::ifstream input(file.path(), std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(input)), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    return 0;
}
