#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

#include "CommandLine.h"
#include "StopSignals.h"

namespace {

/// Where standard input, output or error is closed, the next file opened would take its place and
/// be read or written as such; descriptor 0 would besides count as a failure to the drivers.
void occupyStandardDescriptors() {
    int descriptor;
    do
        descriptor = ::open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor > STDERR_FILENO)
        ::close(descriptor);
}

} // namespace

int main(int argc, char** argv) {
    occupyStandardDescriptors();
    StopSignals::install();
    return runCommandLine(argc, argv);
}
