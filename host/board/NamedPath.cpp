#include "NamedPath.h"

#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace board {

void expectReadable(const std::string& path) {
    if (::access(path.c_str(), R_OK) != 0)
        throw Error(path + ": can't open: " + std::strerror(errno));
}

} // namespace board
