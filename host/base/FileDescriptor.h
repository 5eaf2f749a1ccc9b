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

/// Identifies a file, whatever its path. While a file is open, no other file has its identity.
struct FileIdentity {
    dev_t device;
    ino_t number;

    friend bool operator==(const FileIdentity& a, const FileIdentity& b) {
        return a.device == b.device && a.number == b.number;
    }
    friend bool operator!=(const FileIdentity& a, const FileIdentity& b) { return !(a == b); }
};

///@{
/// Empty if the file can't be examined; the reason is then in `errno`. Symbolic links in the path
/// are followed.
std::optional<FileIdentity> tryIdentify(const std::string& path);
std::optional<FileIdentity> tryIdentify(const FileDescriptor& file);
///@}

/// Who owns a file, and who may use it.
struct FileStatus {
    mode_t mode; ///< with the kind of the file: see kindOf
    uid_t owner;
    gid_t group;
};

///@{
/// Empty if the file can't be examined; the reason is then in `errno`. A symbolic link at the end
/// of the path is not followed.
std::optional<FileStatus> tryExamine(const std::string& path);
std::optional<FileStatus> tryExamine(const FileDescriptor& file);
///@}

/// Opens a file for reading and writing. If the file is missing, creates one that only this user
/// may open. Does not follow a symbolic link at the end of the path.
FileDescriptor tryOpenPrivate(const std::string& path);

///@{
/// Change the file at `path`. False on failure, with the reason in `errno`. Call these only if no
/// other user can replace the file at that path.
bool trySetMode(const std::string& path, mode_t mode);
bool trySetGroup(const std::string& path, gid_t group);
///@}

} // namespace board
