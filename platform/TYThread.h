#pragma once

#include <memory>

#include "String.h"
#include "XCode.h"

class TYRunnable;

/// A thread of the framework's. The order of the virtual operations is part of the binary face.
///
/// A thread can be ended only while it waits in `TYFile::open`, `TYFile::readOnce` or
/// `TYThread::usleep`: the call does not return, the stack is unwound, destructors run. Everywhere
/// else it runs on undisturbed, and where it calls host code (a log sink, a message handler, an
/// observer) behind an `Undisturbed`, not in that host code's own waits either. Other code on such
/// a thread must let through an exception that it does not know, and must not wait in a `noexcept`
/// function or a destructor (in one that runs while the stack is unwound, the wait returns early).
///
/// `start`, `detach` and the destructor are the owner's, one at a time; the other operations may be
/// called on any thread meanwhile, once `start` has returned, and on the thread itself.
///
/// Framework threads block all signals but those of faults, so that the host takes its signals
/// elsewhere. The framework keeps SIGURG for itself to interrupt a waiting thread; a host must not
/// install a handler for it.
class TYThread {
public:
    /// `runnable` is kept, not owned; null runs this object's own `runThread`. No thread is
    /// started.
    explicit TYThread(const String& name, TYRunnable* runnable = nullptr);

    /// Stops the thread. A class that overrides `runThread` must call `stop()` in its own
    /// destructor, while what its thread uses still exists.
    virtual ~TYThread();
    TYThread(const TYThread&) = delete;
    TYThread& operator=(const TYThread&) = delete;

    /// The thread's body: runs the runnable. Without one it fails.
    virtual XCode runThread();

    virtual bool isAlive() const;
    /// The thread's handle within the process; 0 while none runs.
    virtual unsigned long getId() const;
    /// The kernel's number of the thread; 0 while none runs.
    virtual int getTid() const;

    /// Starts the thread. `name` replaces the constructor's name in the system's thread list; empty
    /// keeps it (the system shows 15 bytes). Fails when one runs already or none can be made.
    virtual XCode start(const String& name);

    /// Ends the thread and waits until it has ended: at once where it waits, otherwise when it next
    /// does. Harmless twice and before start. On the thread itself it only marks: the thread ends
    /// at its next wait.
    virtual XCode stop();

    /// Lets the thread go: it can't be joined any more; `stop()` still ends it.
    virtual XCode detach();

    /// Waits for the thread's end and returns what its body returned; a thread that was stopped
    /// counts as success. Fails on the thread itself, after `detach`, and where none was started.
    virtual XCode join();
    /// The same, giving up with a failure after `milliseconds`.
    virtual XCode join(unsigned milliseconds);

    /// The calling thread's stack, a line a frame. Fails for any other thread than the calling one.
    virtual XCode getBacktrace(String& text) const;

    ///@{
    /// The system's scheduling policy (SCHED_OTHER, SCHED_FIFO, ...) and priority. Fail where none
    /// runs.
    virtual XCode getSchedulingPolicy(int& policy, int& priority) const;
    virtual XCode setSchedulingPolicy(int policy, int priority);
    ///@}

    /// Sleeps on the calling thread, at least this long. A framework thread can be ended here.
    static void usleep(unsigned microseconds);

    /// For as long as it lives the calling thread can't be ended: it is in host code, whose waits
    /// are its own. One on the stack around each call into host code.
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
