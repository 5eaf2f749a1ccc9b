#include "program/StopSignals.h"

#include <csignal>
#include <ctime>

#include <poll.h>

#include "program/Options.h"

namespace boardctl {

namespace {

volatile std::sig_atomic_t asked = 0; ///< the first signal; 0 before it
bool isExpected = false;

void ask(int signal) {
    if (asked == 0)
        asked = signal;
}

sigset_t askingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGHUP);
    return signals;
}

} // namespace

void StopSignals::install() {
    struct sigaction action {};
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0; // without SA_RESTART, so that a waiting call returns
    action.sa_handler = ask;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    struct sigaction former {};
    sigaction(SIGHUP, &action, &former);
    if (former.sa_handler == SIG_IGN)
        sigaction(SIGHUP, &former, nullptr);
    // Writes fail instead, with an error that can be reported: if the reader is gone, or if a file
    // reaches its size limit.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool StopSignals::isAsked() {
    return asked != 0;
}

void StopSignals::expectAsEnd() {
    isExpected = true;
}

int StopSignals::statusAfter(int status) {
    return asked != 0 && !isExpected ? BY_SIGNAL + asked : status;
}

bool StopSignals::waitWritable(int descriptor) {
    const sigset_t signals = askingSignals();
    sigset_t former;
    pthread_sigmask(SIG_BLOCK, &signals, &former);
    pollfd output{descriptor, POLLOUT, 0};
    const timespec atOnce{};
    int ready = 0;
    do
        ready = ::ppoll(&output, 1, asked ? &atOnce : nullptr, &former);
    while (ready < 0 && !asked);
    if (ready < 0) // interrupted by a request to end
        ready = ::poll(&output, 1, 0);
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
    return ready > 0;
}

bool StopSignals::isWritable(int descriptor) {
    pollfd output{descriptor, POLLOUT, 0};
    return ::poll(&output, 1, 0) > 0;
}

bool StopSignals::waitUntil(std::optional<Clock::time_point> end, int descriptor) {
    // The signals are blocked while `asked` is tested and open only during the wait, so none gets
    // lost in between.
    const sigset_t signals = askingSignals();
    sigset_t former;
    pthread_sigmask(SIG_BLOCK, &signals, &former);
    while (!asked) {
        using std::chrono::nanoseconds;
        timespec left{};
        if (end) {
            const auto span = std::chrono::duration_cast<nanoseconds>(*end - Clock::now());
            if (span <= nanoseconds(0))
                break;
            left.tv_sec = static_cast<time_t>(span.count() / 1000000000);
            left.tv_nsec = static_cast<long>(span.count() % 1000000000);
        }
        pollfd input{descriptor, POLLIN, 0}; // poll ignores -1
        if (::ppoll(&input, 1, end ? &left : nullptr, &former) > 0)
            break;
    }
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
    return asked != 0;
}

} // namespace boardctl
