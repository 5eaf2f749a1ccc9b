// The floor of the process benchmarks: a C++ program that does nothing, so that only the work of
// the kernel and of the loader is measured.

#include <string>

int main(int count, char**) {
    return std::to_string(count) == "1" ? 0
                                        : 1; // uses the C++ library, so that the linker keeps it
}
