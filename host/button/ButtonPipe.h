#pragma once

#include <string>

#include "base/FileDescriptor.h"

namespace board {

/// The writing side of a button's named pipe. It is open for reading too, so that a message stays
/// in the pipe until the monitor reads it.
///
/// The monitor opens the pipe again for each message and reads everything in it. A message may
/// therefore be written only while the pipe is empty; otherwise the monitor would read two as one.
class ButtonPipe {
public:
    /// Throws Error if `path` can't be opened or is not a pipe; `what` is the expected kind of
    /// pipe, for the message.
    ButtonPipe(const std::string& path, const char* what);

    const std::string& path() const { return m_path; }

    /// Whether the last message has been read.
    bool isEmpty() const;

    /// Write one message. Throw Error if that fails.
    void writePressed() const { write("pressed\n"); }
    void writeReleased() const { write("released\n"); }

    /// Let one program press at a time. `lock` waits until others have unlocked; `tryLock` returns
    /// false if another program holds the lock. Throw Error if they fail.
    void lock() const;
    bool tryLock() const;
    void unlock() const;

private:
    void write(const std::string& message) const;
    bool setLock(int how, short type) const;

    const std::string m_path;
    const FileDescriptor m_pipe;
};

} // namespace board
