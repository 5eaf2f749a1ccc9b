// The floor of every process: the loader's work before and after a C++ program that does nothing.

#include <string>

int main(int count, char**) {
    return std::to_string(count) == "1" ? 0
                                        : 1; // uses the C++ library, so that the linker keeps it
}
