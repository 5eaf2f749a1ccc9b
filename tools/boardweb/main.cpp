#include <malloc.h>

#include "CommandLine.h"

int main(int argc, char** argv) {
#ifdef M_ARENA_MAX
    // Two threads that allocate little: a heap for each would only take memory, for years.
    ::mallopt(M_ARENA_MAX, 1);
#endif
    return boardweb::runCommandLine(argc, argv);
}
