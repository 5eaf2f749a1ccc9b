#include <cstdlib>
#include <new>

#include "faults/Faults.h"

// Replaces new and delete in the whole program and its libraries. Their array forms call these.

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
