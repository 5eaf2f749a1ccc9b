#pragma once

#include <memory>

#include "String.h"
#include "XCode.h"

class TYRunnable;

/// A framework thread. The order of the virtual operations is part of the binary interface.
///
/// A thread can be ended only while it waits in `TYFile::open`, `TYFile::readOnce` or
/// `TYThread::usleep`: instead of returning, the call throws an exception that only the framework
/// may catch, and destructors run. Everywhere else the thread keeps running. Code that runs on such
/// a thread must therefore let unknown exceptions propagate, and must not wait in a `noexcept`
/// function or a destructor. (While the stack is unwound, a wait in a destructor returns early.)
///
/// Host code (a log sink, a message handler, an observer) need not follow these rules: an
/// `Undisturbed` protects each call into host code, so the thread cannot be ended there, not even
/// in a wait.
///
/// Only the owner calls `start`, `detach` and the destructor, one at a time. Once `start` has
/// returned, any thread, including the framework thread itself, may call the other operations.
///
/// Framework threads block all signals except those that report a fault, such as SIGSEGV, so the
/// host receives its signals on its own threads. The framework uses SIGURG to interrupt a waiting
/// thread; a host must not install a handler for SIGURG.
class TYThread {
public:
    /// `runnable` is not owned; it may be null if a derived class overrides `runThread`. Does not
    /// start the thread.
    explicit TYThread(const String& name, TYRunnable* runnable = nullptr);

    /// Stops the thread. A class that overrides `runThread` must call `stop()` in its own
    /// destructor, while everything that its thread uses still exists.
    virtual ~TYThread();
    TYThread(const TYThread&) = delete;
    TYThread& operator=(const TYThread&) = delete;

    /// The thread's body: runs the runnable. Fails if there is no runnable.
    virtual XCode runThread();

    virtual bool isAlive() const;
    /// The thread's handle within the process; 0 if no thread is running.
    virtual unsigned long getId() const;
    /// The kernel's thread ID; 0 if no thread is running.
    virtual int getTid() const;

    /// Starts the thread. If `name` is not empty, it replaces the constructor's name in the
    /// system's thread list, which shows 15 bytes. Fails if the thread is already running or cannot
    /// be created.
    virtual XCode start(const String& name);

    /// Ends the thread and waits until it has ended. A thread that is waiting ends at once, any
    /// other thread at its next wait. May be called twice or before `start`. If a thread calls
    /// `stop` on itself, the call returns immediately, and the thread ends at its next wait.
    virtual XCode stop();

    /// Detaches the thread: it cannot be joined any more, but `stop()` still ends it.
    virtual XCode detach();

    /// Waits for the thread's end and returns the result of its body, or success if the thread was
    /// stopped. Fails if the thread calls it on itself, if the thread is detached, or if no thread
    /// was started.
    virtual XCode join();
    /// Does the same, but gives up and fails after `milliseconds`.
    virtual XCode join(unsigned milliseconds);

    /// Sets `text` to the stack of this thread, one line per frame. Fails if another thread calls
    /// it or if the C library has no stack traces.
    virtual XCode getBacktrace(String& text) const;

    ///@{
    /// Read or set the thread's scheduling policy (SCHED_OTHER, SCHED_FIFO, ...) and priority. Both
    /// fail if no thread is running.
    virtual XCode getSchedulingPolicy(int& policy, int& priority) const;
    virtual XCode setSchedulingPolicy(int policy, int priority);
    ///@}

    /// Puts the calling thread to sleep for at least `microseconds`. A framework thread can be
    /// ended while it sleeps.
    static void usleep(unsigned microseconds);

    /// As long as an object of this class exists, the thread that created it cannot be ended, not
    /// even in a wait. Create such an object on the stack around each call into host code.
    class Undisturbed {
    public:
        Undisturbed();
        ~Undisturbed();
        Undisturbed(const Undisturbed&) = delete;
        Undisturbed& operator=(const Undisturbed&) = delete;

    private:
        const bool m_former;
    };

private:
    struct Control;
    static void* body(void* argument);
    XCode await(const unsigned* milliseconds);

    String m_name;
    TYRunnable* m_runnable;
    std::shared_ptr<Control> m_control;
};
