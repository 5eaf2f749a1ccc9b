#include <malloc.h>

#include "CommandLine.h"

int main(int argc, char** argv) {
#ifdef M_ARENA_MAX
    // The two threads allocate little, and a heap for each would waste memory for years.
    ::mallopt(M_ARENA_MAX, 1);
#endif
    return boardweb::runCommandLine(argc, argv);
}
