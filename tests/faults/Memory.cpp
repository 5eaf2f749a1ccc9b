#include <cstdlib>
#include <new>

#include "faults/Faults.h"

// Replaces the operators of the whole program, the libraries included; those of arrays call these.

void* operator new(std::size_t size) {
    void* const memory = faults::judge("new", "") == faults::Verdict::PASS
                             ? std::malloc(size > 0 ? size : 1)
                             : nullptr;
    if (!memory)
        throw std::bad_alloc();
    ++faults::blocksHeld;
    return memory;
}

void operator delete(void* memory) noexcept {
    if (memory)
        --faults::blocksHeld;
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}
