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

    /// From now on, `serve` calls `action` if `descriptor` is readable or its other end is gone. It
    /// does so again and again until the action has read what there is, or removes the descriptor.
    /// The descriptor must be a pipe, a socket or a device, stays with its owner, and must not be
    /// closed before it is removed. Throws Error if the system can't wait for it.
    void add(int descriptor, Action action);

    /// Whether the action is also called while `descriptor`, which has been added, accepts data. At
    /// first it is not. Throws Error with the system's reason.
    void callWhenWritable(int descriptor, bool isWanted);

    /// Does nothing if `descriptor` has not been added. An action may remove any descriptor, its
    /// own too; the actions of those are not called any more.
    void remove(int descriptor);

    /// Calls the actions of the descriptors that are ready. Never waits. What an action throws
    /// passes through; the actions that were still due are called by the next call.
    void serve();

    /// Readable while `serve` has an action to call.
    int descriptor() const { return m_descriptor.number(); }

private:
    /// Distinguishes a descriptor from an earlier one with the same number.
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
