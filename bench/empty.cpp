// The floor of every process: what the loader does for a C++ program before and after it does
// nothing.

#include <string>

int main(int count, char**) {
    return std::to_string(count) == "1"
               ? 0
               : 1; // the C++ library is needed, or the linker may leave it out
}
