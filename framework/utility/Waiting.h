#pragma once

#include <atomic>
#include <cerrno>

/// How a framework thread waits so that it can be ended there and nowhere else.
///
/// The stopping thread sets `stopRequested` and then sends SIGURG, again and again until the thread
/// has ended, since one signal may come just before the system call and be lost. The signal is
/// blocked outside the one call that waits, so host code never sees an interrupted call. After a
/// call that yields a descriptor the mark is looked at only once the descriptor has an owner;
/// cancellation by the system would lose it.
namespace waiting {

/// What a thread and those who stop it share. One for each run of a thread.
struct State {
    std::atomic<bool> stopRequested{false};
    std::atomic<bool> inCall{false}; ///< within the one call; only then is a signal of any use
};

/// Thrown to unwind a thread's stack; caught by the framework alone. Derived from nothing, so that
/// no handler for errors takes it for one.
struct ThreadStopped {};

/// The signal that interrupts a wait. Ignored by default, so a stray one harms nobody.
int wakeSignal();

/// Installs the handler of the wake signal, once in a process. It does nothing: interrupting is the
/// point.
void installHandler();

/// The calling thread's state; null on a thread that is not the framework's.
State*& current();

/// Whether the calling thread is in host code, where it can't be ended.
bool& undisturbed();

/// Whether somebody has asked the calling thread to end, and it can be ended here.
bool stopRequested();

/// Ends the calling thread if somebody has asked for it; returns false where nobody has. While a
/// destructor runs because the stack is being unwound already it returns true: a second exception
/// would end the process.
bool endIfStopped();

/// Opens the window in which the wake signal gets through; none where the thread can't be ended.
class Window {
public:
    Window();
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

private:
    State* const m_state;
};

/// Runs `call`, a system call that returns -1 with errno where it fails, again after each
/// interruption. Ends the calling thread where that is asked for and the call has yielded nothing
/// (within a destructor the call then fails as interrupted); otherwise returns what it returned; a
/// caller that got a descriptor must let go of it before it calls `endIfStopped`.
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
