#include "output/Messages.h"

#include <cerrno>
#include <iostream>
#include <utility>

#include <unistd.h>

#include "base/File.h"
#include "base/Text.h"
#include "program/StopSignals.h"

namespace boardctl {

void complain(const std::string& what) {
    if (!StopSignals::waitWritable(STDERR_FILENO))
        return;
    std::cerr << "boardctl: " << board::printable(what) << "\n";
}

bool flushOutput() {
    errno = 0;
    if (std::cout.flush())
        return true;
    static bool isTold = false;
    if (!std::exchange(isTold, true) &&
        !StopSignals::isAsked()) // a write that a stop signal interrupted is not an error
        complain(std::string("can't write to standard output") +
                 (errno != 0 ? std::string(": ") + board::reasonOf(errno) : ""));
    return false;
}

} // namespace boardctl
