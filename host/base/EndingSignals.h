#pragma once

#include <csignal>
#include <initializer_list>

namespace board {

/// Holds back the signals that ask a program to end, as long as it exists: a device must not be
/// left between two states, and a write that restores one must not be interrupted. A signal that
/// arrives meanwhile is delivered afterwards.
class EndingSignalsHeld {
public:
    EndingSignalsHeld() {
        sigset_t ending;
        sigemptyset(&ending);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
            sigaddset(&ending, signal);
        ::pthread_sigmask(SIG_BLOCK, &ending, &m_former);
    }
    ~EndingSignalsHeld() { ::pthread_sigmask(SIG_SETMASK, &m_former, nullptr); }
    EndingSignalsHeld(const EndingSignalsHeld&) = delete;
    EndingSignalsHeld& operator=(const EndingSignalsHeld&) = delete;

private:
    sigset_t m_former;
};

} // namespace board
