#pragma once

#include <optional>
#include <string>
#include <utility>

#include <sys/types.h>

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

/// What a path leads to. While a file is open, no other file has its identity.
struct FileIdentity {
    dev_t device;
    ino_t number;

    friend bool operator==(const FileIdentity& a, const FileIdentity& b) {
        return a.device == b.device && a.number == b.number;
    }
    friend bool operator!=(const FileIdentity& a, const FileIdentity& b) { return !(a == b); }
};

///@{
/// Empty if it can't be examined; the reason is then in `errno`. The path's symbolic links are
/// followed.
std::optional<FileIdentity> tryIdentify(const std::string& path);
std::optional<FileIdentity> tryIdentify(const FileDescriptor& file);
///@}

} // namespace board
