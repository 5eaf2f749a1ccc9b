#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

#include "base/FileDescriptor.h"

namespace boardweb {

/// Waits on behalf of the program's main thread. SIGINT and SIGTERM ask the program to end: they
/// end the present wait, and later waits return at once. Create only one object, before any other
/// thread: it blocks these signals in threads that are created later.
class Waits {
public:
    using Clock = std::chrono::steady_clock;
    using Time = std::optional<Clock::time_point>;

    /// Throws Error if the system has no descriptor left.
    Waits();

    /// Ends the present wait, or the next one. Can be called on any thread.
    void wake() const;

    /// True if the program was asked to end.
    static bool isAsked();

    /// Each wait first calls `work`. If `work` returns an earlier time than the wait's end, the
    /// wait ends at that time, and the caller waits again.
    void setWork(std::function<Time()> work) { m_work = std::move(work); }

    /// Waits until `end`, if there is one, until one of the descriptors is readable, or until
    /// `wake` was called. Returns isAsked().
    bool untilAny(Time end, const std::vector<int>& descriptors);
    /// The same for one descriptor, but `wake` does not end it.
    bool until(Time end, int descriptor);

private:
    bool wait(Time end, const std::vector<int>& descriptors) const;

    const board::FileDescriptor m_wake;
    std::function<Time()> m_work;
};

} // namespace boardweb
