#include <iterator>

#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <unistd.h>

#include "CommandLine.h"
#include "base/File.h"
#include "program/StopSignals.h"

namespace {

/// If standard input, output or error is closed, the next file opened would take its place and be
/// read or written as such. The drivers also treat descriptor 0 as a failure. What takes the place
/// can't be read or written as the command would, so that it fails instead of losing something.
void occupyStandardDescriptors() {
    pollfd standard[] = {{STDIN_FILENO, 0, 0}, {STDOUT_FILENO, 0, 0}, {STDERR_FILENO, 0, 0}};
    if (::poll(standard, std::size(standard), 0) <= 0)
        return;
    for (const pollfd& each : standard) { // an open takes the lowest free place
        const int flags = each.fd == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if ((each.revents & POLLNVAL) != 0)
            static_cast<void>(board::tryOpen("/dev/null", flags).release());
    }
}

/// The threads of a host allocate little: a heap for each would only take memory, for years.
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
