#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace board {

/// Reads a descriptor's input events, records as the kernel has them, for what becomes of one key.
class KeyEvents {
public:
    /// `descriptor` is not owned; `isDownNow` asks the device itself for the key, at first and
    /// where the kernel had to drop events; its answer stands for all events up to then. `name` is
    /// for messages.
    KeyEvents(std::string name, int descriptor, unsigned code, std::function<bool()> isDownNow);

    /// The levels that the key took since the last call, in order; true is down. Reads once, and
    /// waits only where the descriptor does. Throws Error where it can't be read any more.
    std::vector<bool> read();

private:
    const std::string m_name;
    const int m_descriptor;
    const unsigned m_code;
    const std::function<bool()> m_isDownNow;
    bool m_isDown;
    bool m_isLost = false; ///< events were dropped, and the report that they were part of goes on
};

/// One key of an input device, as a push-button behind the kernel's driver for keys on lines is.
class InputKey {
public:
    /// Opens `device`, such as /dev/input/event0. Without `code` it must have one key only. Throws
    /// Error where it is no input device, can't be opened, or has not got the key; then with the
    /// codes that it has.
    InputKey(const std::string& device, std::optional<unsigned> code);

    /// The key's code, as in the kernel's list of input event codes.
    unsigned code() const { return m_code; }
    /// Can be read where there are events, and where the device is gone.
    int descriptor() const { return m_file.number; }
    /// Reading them does not wait. They live as long as this object.
    KeyEvents& events() { return m_events; }

private:
    struct File {
        explicit File(const std::string& path);
        ~File();
        File(const File&) = delete;
        File& operator=(const File&) = delete;
        const int number;
    };

    const File m_file;
    const unsigned m_code;
    KeyEvents m_events;
};

} // namespace board
