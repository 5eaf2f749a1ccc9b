#pragma once

#include <atomic>
#include <cerrno>

/// Makes it possible to stop a framework thread while it waits, but nowhere else.
///
/// The thread that calls `stop` sets `stopRequested` and then sends SIGURG repeatedly until the
/// other thread has ended, because one signal may arrive just before the system call and be lost.
/// The signal is blocked outside the one call that waits, so host code never sees an interrupted
/// call.
///
/// If the call returns a descriptor, the caller stores the descriptor before it checks for a stop,
/// so that the descriptor is not leaked. pthread_cancel is not used, because it could end the
/// thread before the descriptor is stored.
namespace waiting {

/// Shared by a thread and the threads that stop it. Each start of a thread creates a new State.
struct State {
    std::atomic<bool> stopRequested{false};
    std::atomic<bool> inCall{false}; ///< true in the waiting call; the signal has effect only then
};

/// Thrown to unwind a thread's stack and caught only by the framework. It has no base class, so a
/// handler for std::exception does not catch it.
struct ThreadStopped {};

/// The signal that interrupts a wait. By default it is ignored, so a stray signal does no harm.
int wakeSignal();

/// Installs the handler of the wake signal, once per process. The handler does nothing; its only
/// purpose is to let the signal interrupt the waiting call.
void installHandler();

/// The calling thread's state; null if the framework did not start the thread.
State*& current();

/// True while the calling thread is in host code, where it can't be stopped.
bool& undisturbed();

/// True if the calling thread was asked to stop and can be stopped here.
bool stopRequested();

/// Ends the calling thread by throwing ThreadStopped if it was asked to stop; otherwise returns
/// false. If the stack is already being unwound, returns true instead of throwing, because a second
/// exception would end the process.
bool endIfStopped();

/// Unblocks the wake signal in its constructor and blocks it again in its destructor. Does nothing
/// if the thread can't be stopped.
class Window {
public:
    Window();
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

private:
    State* const m_state;
};

/// Runs `call`, a system call that returns -1 and sets errno on failure, and repeats it after each
/// interruption. Before each try, ends the calling thread if it was asked to stop; if the stack is
/// being unwound, fails with EINTR instead. A caller that opened a descriptor must close it before
/// calling `endIfStopped`, which may throw.
template <class Call>
auto interruptible(Call call) -> decltype(call()) {
    for (;;) {
        if (endIfStopped()) {
            errno = EINTR;
            return -1;
        }
        decltype(call()) result;
        int error;
        {
            const Window window;
            result = call();
            error = errno;
        }
        errno = error;
        if (result != -1 || error != EINTR)
            return result;
    }
}

} // namespace waiting
