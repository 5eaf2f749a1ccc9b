#include "Waiting.h"

#include <csignal>
#include <exception>
#include <mutex>

namespace waiting {

namespace {

void setBlocked(bool blocked) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, wakeSignal());
    pthread_sigmask(blocked ? SIG_BLOCK : SIG_UNBLOCK, &signals, nullptr);
}

} // namespace

int wakeSignal() {
    return SIGURG;
}

void installHandler() {
    static std::once_flag once;
    std::call_once(once, [] {
        struct sigaction action {};
        action.sa_handler = [](int) {};
        sigemptyset(&action.sa_mask);
        action.sa_flags = 0; // without SA_RESTART: the waiting call must return
        sigaction(wakeSignal(), &action, nullptr);
    });
}

State*& current() {
    static thread_local State* state = nullptr;
    return state;
}

bool& undisturbed() {
    static thread_local bool isUndisturbed = false;
    return isUndisturbed;
}

bool stopRequested() {
    const State* const state = undisturbed() ? nullptr : current();
    return state && state->stopRequested.load(std::memory_order_acquire);
}

bool endIfStopped() {
    if (!stopRequested())
        return false;
    if (std::uncaught_exceptions() == 0)
        throw ThreadStopped();
    return true;
}

Window::Window() : m_state(undisturbed() ? nullptr : current()) {
    if (!m_state)
        return;
    m_state->inCall.store(true, std::memory_order_release);
    setBlocked(false);
}

Window::~Window() {
    if (!m_state)
        return;
    setBlocked(true);
    m_state->inCall.store(false, std::memory_order_release);
}

} // namespace waiting
