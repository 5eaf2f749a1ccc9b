#pragma once

#include <utility>

namespace board {

/// Owns an open file descriptor and closes it on destruction. Can be moved, not copied.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Takes over `number`; a negative number owns nothing.
    explicit FileDescriptor(int number) : m_number(number) {}
    ~FileDescriptor() { close(); }
    FileDescriptor(FileDescriptor&& other) noexcept : m_number(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            close();
            m_number = other.release();
        }
        return *this;
    }

    bool isOpen() const { return m_number >= 0; }
    /// -1 if nothing is owned.
    int number() const { return m_number; }

    /// Gives up ownership without closing.
    int release() { return std::exchange(m_number, -1); }
    /// Does nothing if nothing is owned. Preserves `errno`, so that the reason of a failure
    /// survives clean-up.
    void close() noexcept;

private:
    int m_number = -1;
};

} // namespace board
