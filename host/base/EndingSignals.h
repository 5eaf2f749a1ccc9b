#pragma once

#include <atomic>
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

/// A program that handles those signals stores a function here that tells whether one has asked it
/// to end. Computations that may be long and waits that come in parts look at it.
inline std::atomic<bool (*)()> endQuestion{nullptr};

inline bool isEndAsked() {
    bool (*const question)() = endQuestion;
    return question && question();
}

} // namespace board
