#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/FileDescriptor.h"

namespace board {

/// Follows one key in the input events that the kernel delivers on a descriptor.
class KeyEvents {
public:
    /// `descriptor` is not owned. `isDownNow` asks the device for the key's current state; it is
    /// called once here and again whenever the kernel has dropped events. Its answer then replaces
    /// all events up to that point. `name` is for messages.
    KeyEvents(std::string name, int descriptor, unsigned code, std::function<bool()> isDownNow);

    /// The key's changes since the last call, in order; true is down. Reads once, and waits only if
    /// the descriptor is blocking. Throws Error if it can't be read any more.
    std::vector<bool> read();

private:
    const std::string m_name;
    const int m_descriptor;
    const unsigned m_code;
    const std::function<bool()> m_isDownNow;
    bool m_isDown;
    bool m_isLost = false; ///< events were dropped, and no SYN_REPORT has followed yet
};

/// One key of an input device, such as a push-button of the kernel's GPIO key driver.
class InputKey {
public:
    /// Opens `device`, such as /dev/input/event0. Without `code` the device must have exactly one
    /// key. Throws Error if it can't be opened, is not an input device or does not have the key;
    /// the message then lists the codes that it has.
    InputKey(const std::string& device, std::optional<unsigned> code);

    /// The key's code in the kernel's list of input event codes.
    unsigned code() const { return m_code; }
    /// Readable if there are events or if the device is gone.
    int descriptor() const { return m_file.number(); }
    /// Reading the events never waits. The reference is valid as long as this object exists.
    KeyEvents& events() { return m_events; }

private:
    const FileDescriptor m_file;
    const unsigned m_code;
    KeyEvents m_events;
};

} // namespace board
