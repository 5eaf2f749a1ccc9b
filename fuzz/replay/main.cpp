// Stands in for the fuzzer if the compiler has none: runs the target once for each file of the
// corpus, and for no input at all.

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
        std::cerr << file.path().string() << "\n"; // the last one is the input that broke something
        std::ifstream input(file.path(), std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(input)), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    return 0;
}
