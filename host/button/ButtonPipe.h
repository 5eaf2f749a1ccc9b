#pragma once

#include <string>

namespace board {

/// A button's named pipe from the side that writes it. It is held open for both, so that a message
/// stays in it until it is read.
///
/// Who watches a button takes one message with each opening of the pipe: the next one may be
/// written only when the pipe is empty, or the two would be read as one.
class ButtonPipe {
public:
    /// Throws Error, with `what` the pipe is not, where it is no pipe or can't be opened.
    ButtonPipe(const std::string& path, const char* what);
    ~ButtonPipe();
    ButtonPipe(const ButtonPipe&) = delete;
    ButtonPipe& operator=(const ButtonPipe&) = delete;

    const std::string& path() const { return m_path; }

    /// Whether the last message has been read.
    bool isEmpty() const;

    /// One message. Throws Error where it can't be written.
    void writePressed() const { write("pressed\n"); }
    void writeReleased() const { write("released\n"); }

    /// One finger at a time: `lock` waits until others have unlocked, `tryLock` is false where one
    /// has to. Throw Error where they can't.
    void lock() const;
    bool tryLock() const;
    void unlock() const;

private:
    void write(const std::string& message) const;
    bool setLock(int how, short type) const;

    const std::string m_path;
    int m_pipe;
};

} // namespace board
