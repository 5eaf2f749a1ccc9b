#include "TYThread.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <utility>

#if __has_include(<execinfo.h>) // musl has no such header
#include <execinfo.h>
#endif
#include <pthread.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "TYRunnable.h"
#include "Waiting.h"

namespace {

XCode failure(const char* what, int error = 0) {
    return XCode(XCode::FAILURE,
                 error ? String::format("%s: %s", what, std::strerror(error)) : String(what));
}

// Fault signals stay unblocked: a blocked fault signal would kill the process without a call to the
// host's handler, which may write a crash report.
sigset_t everySignalButFaults() {
    sigset_t signals;
    sigfillset(&signals);
    for (int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS})
        sigdelset(&signals, fault);
    return signals;
}

} // namespace

struct TYThread::Control {
    explicit Control(TYThread& t, const String& n)
        : thread(t), name(n.c_str(), n.length() < 15 ? n.length() : 15) {}

    TYThread& thread; // not used after the body returns
    const String name;
    waiting::State state;

    std::mutex mutex; // guards the members below
    std::condition_variable changed;
    pthread_t handle{};
    int tid = 0;
    bool ended = false;
    bool released = false; // joined or detached: the handle must not be used
    bool joinable = true;
    XCode result;
};

TYRunnable::~TYRunnable() = default;

TYThread::TYThread(const String& name, TYRunnable* runnable) : m_name(name), m_runnable(runnable) {}

TYThread::~TYThread() {
    static_cast<void>(TYThread::stop());
    // `detach` is needed only if the thread destroys its own object: `stop` does not join the
    // calling thread.
    static_cast<void>(TYThread::detach());
}

XCode TYThread::runThread() {
    return m_runnable ? m_runnable->runThread() : failure("THREAD HAS NOTHING TO RUN");
}

void* TYThread::body(void* argument) {
    const std::shared_ptr<Control> control = *static_cast<std::shared_ptr<Control>*>(argument);
    pthread_setname_np(pthread_self(), control->name.c_str());
    waiting::current() = &control->state;
    {
        const std::lock_guard<std::mutex> hold(control->mutex);
        control->tid = static_cast<int>(::syscall(SYS_gettid));
        control->changed.notify_all();
    }

    // A destructor records the thread's end, so that the end is also recorded if host code ends the
    // thread with pthread_exit or pthread_cancel.
    struct Ending {
        Control& control;
        XCode result;
        ~Ending() {
            waiting::current() = nullptr;
            const std::lock_guard<std::mutex> hold(control.mutex);
            control.result = std::move(result);
            control.ended = true;
            control.changed.notify_all();
        }
    } ending{*control, XCode()};
    try {
        ending.result = control->thread.runThread();
    } catch (const waiting::ThreadStopped&) {
        ending.result = XCode();
    }
    return nullptr;
}

XCode TYThread::start(const String& name) {
    if (isAlive())
        return failure("THREAD RUNS ALREADY");
    if (m_control)
        static_cast<void>(TYThread::detach()); // the previous run may not have been joined

    waiting::installHandler();
    const auto control = std::make_shared<Control>(*this, name.isEmpty() ? m_name : name);
    m_control = control; // set first, because the new thread may use it at once
    const sigset_t blocked = everySignalButFaults();
    sigset_t former;
    // The mask is set before the new thread is created, because that thread inherits it.
    pthread_sigmask(SIG_SETMASK, &blocked, &former);
    int error;
    {
        std::unique_lock<std::mutex> hold(control->mutex);
        auto handedOver = control;
        error = pthread_create(&control->handle, nullptr, &TYThread::body, &handedOver);
        if (error == 0)
            control->changed.wait(hold, [&] { return control->tid != 0; });
    }
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
    if (error == 0)
        return XCode();
    m_control.reset();
    return failure("CREATE THREAD", error);
}

bool TYThread::isAlive() const {
    if (!m_control)
        return false;
    const std::lock_guard<std::mutex> hold(m_control->mutex);
    return !m_control->ended;
}

unsigned long TYThread::getId() const {
    return isAlive() ? static_cast<unsigned long>(m_control->handle) : 0;
}

int TYThread::getTid() const {
    return isAlive() ? m_control->tid : 0;
}

XCode TYThread::stop() {
    const std::shared_ptr<Control> control = m_control;
    if (!control)
        return XCode();
    control->state.stopRequested.store(true, std::memory_order_release);
    if (waiting::current() == &control->state)
        return XCode();

    constexpr auto NEXT_SIGNAL = std::chrono::milliseconds(2);
    std::unique_lock<std::mutex> hold(control->mutex);
    while (!control->ended) {
        if (control->state.inCall.load(std::memory_order_acquire))
            pthread_kill(control->handle, waiting::wakeSignal());
        control->changed.wait_for(hold, NEXT_SIGNAL);
    }
    const bool mine = !control->released;
    control->released = true;
    hold.unlock();
    if (mine)
        pthread_join(control->handle, nullptr);
    return XCode();
}

XCode TYThread::detach() {
    if (!m_control)
        return failure("NO THREAD TO DETACH");
    const std::lock_guard<std::mutex> hold(m_control->mutex);
    m_control->joinable = false;
    if (!m_control->released)
        pthread_detach(m_control->handle);
    m_control->released = true;
    return XCode();
}

XCode TYThread::join() {
    return await(nullptr);
}

XCode TYThread::join(unsigned milliseconds) {
    return await(&milliseconds);
}

XCode TYThread::await(const unsigned* milliseconds) {
    const std::shared_ptr<Control> control = m_control;
    if (!control)
        return failure("NO THREAD TO JOIN");
    if (waiting::current() == &control->state)
        return failure("THREAD CAN'T JOIN ITSELF");

    std::unique_lock<std::mutex> hold(control->mutex);
    if (!control->joinable)
        return failure("THREAD IS DETACHED");
    const auto ended = [&] { return control->ended; };
    if (!milliseconds)
        control->changed.wait(hold, ended);
    else if (!control->changed.wait_for(hold, std::chrono::milliseconds(*milliseconds), ended))
        return failure("THREAD STILL RUNS");
    const bool mine = !control->released;
    control->released = true;
    XCode result = control->result;
    hold.unlock();
    if (mine)
        pthread_join(control->handle, nullptr);
    return result;
}

XCode TYThread::getBacktrace(String& text) const {
    if (!m_control || waiting::current() != &m_control->state)
        return failure("ONLY A THREAD ITSELF CAN TRACE ITS STACK");
#if __has_include(<execinfo.h>)
    void* frames[64];
    const int count = backtrace(frames, 64);
    char** const lines = backtrace_symbols(frames, count);
    if (!lines)
        return failure("NO MEMORY FOR THE STACK TRACE");
    String trace;
    for (int i = 0; i < count; ++i)
        trace.concatf("%s\n", lines[i]);
    std::free(lines);
    text = trace;
    return XCode();
#else
    static_cast<void>(text);
    return failure("THIS SYSTEM'S C LIBRARY HAS NO STACK TRACES");
#endif
}

XCode TYThread::getSchedulingPolicy(int& policy, int& priority) const {
    if (!m_control)
        return failure("NO THREAD RUNS");
    // The handle is valid only until the thread ends.
    const std::lock_guard<std::mutex> hold(m_control->mutex);
    if (m_control->ended)
        return failure("NO THREAD RUNS");
    sched_param parameters{};
    int current = 0;
    if (const int error = pthread_getschedparam(m_control->handle, &current, &parameters))
        return failure("GET SCHEDULING POLICY", error);
    policy = current;
    priority = parameters.sched_priority;
    return XCode();
}

XCode TYThread::setSchedulingPolicy(int policy, int priority) {
    if (!m_control)
        return failure("NO THREAD RUNS");
    const std::lock_guard<std::mutex> hold(m_control->mutex);
    if (m_control->ended)
        return failure("NO THREAD RUNS");
    sched_param parameters{};
    parameters.sched_priority = priority;
    if (const int error = pthread_setschedparam(m_control->handle, policy, &parameters))
        return failure("SET SCHEDULING POLICY", error);
    return XCode();
}

void TYThread::usleep(unsigned microseconds) {
    timespec end{};
    clock_gettime(CLOCK_MONOTONIC, &end);
    end.tv_sec += static_cast<time_t>(microseconds / 1000000);
    end.tv_nsec += static_cast<long>(microseconds % 1000000) * 1000;
    if (end.tv_nsec >= 1000000000) {
        end.tv_nsec -= 1000000000;
        ++end.tv_sec;
    }
    waiting::interruptible([&] {
        errno = clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr);
        return errno == 0 ? 0 : -1;
    });
}

TYThread::Undisturbed::Undisturbed() : m_former(std::exchange(waiting::undisturbed(), true)) {}

TYThread::Undisturbed::~Undisturbed() {
    waiting::undisturbed() = m_former;
}
