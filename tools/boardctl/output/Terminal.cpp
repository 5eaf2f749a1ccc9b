#include "output/Terminal.h"

#include <cstdlib>
#include <cstring>

#include <unistd.h>

namespace boardctl {

bool canRedraw(int descriptor) {
    const char* const terminal = std::getenv("TERM");
    return ::isatty(descriptor) == 1 && terminal && std::strcmp(terminal, "dumb") != 0;
}

} // namespace boardctl
