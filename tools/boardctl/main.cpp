#include <iterator>

#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <unistd.h>

#include "CommandLine.h"
#include "base/File.h"
#include "program/StopSignals.h"

namespace {

/// Opens /dev/null for each of standard input, output and error that is closed. Otherwise, a file
/// opened later would get the free descriptor, and the command would read or write that file by
/// mistake. The drivers also treat descriptor 0 as a failure. Input is opened only for writing and
/// output only for reading, so that using them fails instead of yielding nothing or losing text.
void occupyStandardDescriptors() {
    pollfd standard[] = {{STDIN_FILENO, 0, 0}, {STDOUT_FILENO, 0, 0}, {STDERR_FILENO, 0, 0}};
    if (::poll(standard, std::size(standard), 0) <= 0)
        return;
    for (const pollfd& each : standard) { // an open returns the lowest free descriptor
        const int flags = each.fd == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if ((each.revents & POLLNVAL) != 0)
            static_cast<void>(board::tryOpen("/dev/null", flags).release());
    }
}

/// Lets all threads use one heap. The threads of a host allocate little, and a heap for each would
/// waste memory for years.
void shareHeap() {
#ifdef M_ARENA_MAX
    ::mallopt(M_ARENA_MAX, 1);
#endif
}

} // namespace

int main(int argc, char** argv) {
    shareHeap();
    occupyStandardDescriptors();
    boardctl::StopSignals::install();
    return boardctl::runCommandLine(argc, argv);
}
