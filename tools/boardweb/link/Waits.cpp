#include "link/Waits.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>

#include <poll.h>
#include <sys/eventfd.h>

#include "base/Error.h"
#include "base/File.h"

namespace boardweb {

namespace {

volatile std::sig_atomic_t asked = 0;

void ask(int) {
    asked = 1;
}

sigset_t askingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

} // namespace

Waits::Waits() : m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!m_wake.isOpen())
        throw board::Error("can't create an eventfd: " + board::reasonOf(errno));
    struct sigaction action {};
    sigemptyset(&action.sa_mask);
    action.sa_handler = ask; // without SA_RESTART, so that a waiting call returns
    const sigset_t signals = askingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

void Waits::wake() const {
    const std::uint64_t once = 1;
    static_cast<void>(board::tryWrite(m_wake, &once, sizeof once));
}

bool Waits::isAsked() {
    return asked != 0;
}

bool Waits::untilAny(Time end, const std::vector<int>& descriptors) {
    std::vector<int> all = descriptors;
    all.push_back(m_wake.number());
    const Time next = m_work ? m_work() : std::nullopt;
    wait(end && next ? std::min(end, next) : (end ? end : next), all);
    std::uint64_t wakes = 0;
    static_cast<void>(board::tryRead(m_wake, &wakes, sizeof wakes));
    return isAsked();
}

bool Waits::until(Time end, int descriptor) {
    const Time next = m_work ? m_work() : std::nullopt;
    return wait(end && next ? std::min(end, next) : (end ? end : next), {descriptor});
}

bool Waits::wait(Time end, const std::vector<int>& descriptors) const {
    std::vector<pollfd> inputs;
    for (const int descriptor : descriptors)
        inputs.push_back({descriptor, POLLIN, 0});
    timespec left{};
    if (end) {
        using std::chrono::nanoseconds;
        const auto span = std::max(nanoseconds(0), nanoseconds(*end - Clock::now()));
        left.tv_sec = static_cast<time_t>(span.count() / 1000000000);
        left.tv_nsec = static_cast<long>(span.count() % 1000000000);
    }
    // Signals can arrive only during the wait, so none is missed between the test and the wait.
    sigset_t open;
    pthread_sigmask(SIG_SETMASK, nullptr, &open);
    sigdelset(&open, SIGINT);
    sigdelset(&open, SIGTERM);
    if (!asked)
        static_cast<void>(::ppoll(inputs.data(), inputs.size(), end ? &left : nullptr, &open));
    return isAsked();
}

} // namespace boardweb
