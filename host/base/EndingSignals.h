#pragma once

#include <atomic>
#include <csignal>
#include <initializer_list>

namespace board {

/// As long as it exists, holds back the signals that ask a program to end, so that no device is
/// left between two states and no write that restores a device is interrupted. A signal that
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

/// A program that handles these signals stores a function here. The function tells whether a signal
/// has asked the program to end. Long computations and loops of short waits ask isEndAsked, so that
/// they end early.
inline std::atomic<bool (*)()> endQuestion{nullptr};

inline bool isEndAsked() {
    bool (*const question)() = endQuestion;
    return question && question();
}

} // namespace board
