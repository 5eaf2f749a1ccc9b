#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

#include "base/FileDescriptor.h"

namespace board {

/// Waits for any number of descriptors through a single one, so that a loop that waits for one
/// descriptor can serve many. One thread.
class Poller {
public:
    using Action = std::function<void()>;

    /// Throws Error if the system has no descriptor left.
    Poller();

    /// From now on, `serve` calls `action` again and again while `descriptor` is readable or its
    /// other end is gone, until the action has read everything or has removed the descriptor. The
    /// descriptor must be a pipe, a socket or a device. The caller still owns it, and must remove
    /// it here before closing it. Throws Error if the system can't wait for it.
    void add(int descriptor, Action action);

    /// Sets whether `serve` also calls the action while `descriptor` accepts data; at first, it
    /// does not. The descriptor must have been added. Throws Error with the system's reason.
    void callWhenWritable(int descriptor, bool isWanted);

    /// Does nothing if `descriptor` has not been added. An action may remove any descriptor, even
    /// its own. The action of a removed descriptor is not called any more.
    void remove(int descriptor);

    /// Calls the actions of the descriptors that are ready. Never waits. Passes on what an action
    /// throws; the next call then calls the actions that were still due.
    void serve();

    /// Readable while `serve` has an action to call.
    int descriptor() const { return m_descriptor.number(); }

private:
    /// The `id` distinguishes a descriptor from an earlier one with the same number.
    struct Entry {
        std::uint32_t id;
        std::shared_ptr<const Action> action;
    };
    void control(int operation, int descriptor, std::uint32_t events, std::uint32_t id) const;

    const FileDescriptor m_descriptor;
    std::map<int, Entry> m_entries;
    std::uint32_t m_lastId = 0;
};

} // namespace board
