#include "program/StopSignals.h"

#include <atomic>
#include <csignal>
#include <ctime>

#include <poll.h>
#include <unistd.h>

#include "base/EndingSignals.h"
#include "program/Options.h"

namespace boardctl {

namespace {

volatile std::sig_atomic_t asked = 0; ///< the first signal; 0 if there was none
std::atomic<bool> isNoticed{false};   ///< the command has noticed `asked` and is cleaning up
std::atomic<long> askedAt{0};         ///< when `asked` was set
bool isExpected = false;

/// The milliseconds since an unknown start; the number may wrap.
long clockMs() {
    timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<long>(static_cast<unsigned long>(time.tv_sec) * 1000UL +
                             static_cast<unsigned long>(time.tv_nsec) / 1000000UL);
}

void ask(int signal) {
    // In ms. timeout(1) sends its signal twice: to the program and to its group.
    constexpr unsigned long SAME_REQUEST = 500;
    if (asked == 0) {
        askedAt = clockMs();
        asked = signal;
    } else if (!isNoticed &&
               static_cast<unsigned long>(clockMs()) - static_cast<unsigned long>(askedAt.load()) >=
                   SAME_REQUEST) {
        ::_exit(BY_SIGNAL + signal);
    }
}

/// Whether the program was asked to end. If so, notes that the command knows now.
bool notice() {
    if (asked != 0)
        isNoticed = true;
    return asked != 0;
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
    // With these signals ignored, a write does not end the program if the reader is gone or the
    // file has reached its size limit: it fails with an error that can be reported.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    board::endQuestion = isAsked;
}

bool StopSignals::isAsked() {
    return notice();
}

void StopSignals::expectAsEnd() {
    isExpected = true;
}

int StopSignals::statusAfter(int status) {
    return notice() && !isExpected ? BY_SIGNAL + asked : status;
}

bool StopSignals::waitWritable(int descriptor) {
    const sigset_t signals = askingSignals();
    sigset_t former;
    pthread_sigmask(SIG_BLOCK, &signals, &former);
    pollfd output{descriptor, POLLOUT, 0};
    const timespec atOnce{};
    int ready = 0;
    do
        ready = ::ppoll(&output, 1, notice() ? &atOnce : nullptr, &former);
    while (ready < 0 && !notice());
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
    // The signals are blocked while `asked` is tested and unblocked only during the wait, so none
    // gets lost in between.
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
    return notice();
}

} // namespace boardctl
