#include <fcntl.h>
#include <unistd.h>

#include "CommandLine.h"
#include "base/File.h"
#include "program/StopSignals.h"

namespace {

/// If standard input, output or error is closed, the next file opened would take its place and be
/// read or written as such. The drivers also treat descriptor 0 as a failure.
void occupyStandardDescriptors() {
    for (;;) {
        board::FileDescriptor file = board::tryOpen("/dev/null", O_RDWR);
        if (!file.isOpen() || file.number() > STDERR_FILENO)
            return;
        static_cast<void>(file.release()); // stays open in the standard descriptor's place
    }
}

} // namespace

int main(int argc, char** argv) {
    occupyStandardDescriptors();
    boardctl::StopSignals::install();
    return boardctl::runCommandLine(argc, argv);
}
