#pragma once

#include <optional>
#include <string>

#include <sys/types.h>

#include "base/FileDescriptor.h"
#include "base/files/FileLock.h"
#include "base/files/NewFile.h"

namespace board {

/// Replaces the content of a file so that every reader sees the old or the new content whole, and
/// writers take turns.
///
/// Symbolic links are followed. The file is locked, then a new file is written in the same folder
/// with the same owner and mode, synced and renamed into place (see NewFile). If the program is
/// killed before the rename, the new file stays as `.NAME.new-content`, and the next replacement
/// removes it. A device or a sysfs file can't be replaced: it is locked and written from its start
/// in one call. One thread at a time.
class FileReplacement {
public:
    /// BY_KIND replaces an ordinary file and writes to a device in place. IN_PLACE also writes to
    /// an ordinary file in place, for files that simulate a board's device. UNREAD does not lock an
    /// ordinary file: its old content is not needed, and anybody who may read the file could hold
    /// its lock forever.
    enum class Manner { BY_KIND, IN_PLACE, UNREAD };

    /// Waits for the lock on `path` as long as `wait` allows. A file that does not exist is not
    /// locked; `commit` creates it, and replaces a file that has appeared in the meantime. Throws
    /// Error if the file can't be opened or locked, if it is a folder, pipe or socket, or if it is
    /// to be replaced and has several names (hard links), because the other names would keep the
    /// old content.
    explicit FileReplacement(const std::string& path, Manner manner = Manner::BY_KIND,
                             const LockWait& wait = {});

    /// Whether there was a file when this object was made. It has been locked since then, unless
    /// UNREAD left it unlocked.
    bool exists() const { return m_lock.isOpen(); }

    /// Who may read and write the locked file. Throws Error if that can't be found out.
    FileAccess access() const;

    /// Whether `commit` writes in place.
    bool isInPlace() const { return m_inPlace; }

    /// The content of the locked file, or only its first `limit` bytes if it is written in place.
    /// Throws Error if the file does not exist or can't be read, if it is to be replaced and has
    /// more than `limit` bytes, or if a pipe or folder has taken its place.
    std::string content(std::size_t limit) const;

    /// Makes `bytes` the content. A new file is read back and compared before it replaces the old
    /// one; the content of a device is not compared. Throws Error on failure. If the file is
    /// written in place, it may then hold part of the bytes. Otherwise it is unchanged unless the
    /// message says that it was replaced. The message also names a temporary file that could not be
    /// removed. A file that did not exist gets the mode `newMode`; if that is empty, the mode that
    /// the umask grants.
    void commit(const std::string& bytes, std::optional<mode_t> newMode = {});

private:
    void writeInPlace(const std::string& bytes) const;

    const std::string m_path; ///< as the user named it, for messages
    std::string m_target;     ///< what `path` leads to through symbolic links
    FileDescriptor m_lock;    ///< not open if the file does not exist yet
    bool m_inPlace = false;
};

/// A file to which programs append lines, such as the record of a station. Several programs may
/// append at the same time, because each line is written in one call.
class LineFile {
public:
    /// Opens the file; creates it if it is missing. Throws Error if that fails, and for a pipe,
    /// because a pipe drops the lines if it has no reader and becomes full if its reader is slow.
    explicit LineFile(const std::string& path);

    /// Appends the line and a newline, and syncs. If a power failure has cut off the last line, the
    /// new one still begins on its own line. Throws Error on failure.
    void append(const std::string& line) const;

    /// Whether the file has exactly this line; false for a device, which is not read. Throws Error
    /// if the file can't be read.
    bool holds(const std::string& line) const;

private:
    const std::string m_path;
    const FileDescriptor m_file;
};

/// Replaces a file in the manner UNREAD.
void replaceFile(const std::string& path, const std::string& bytes,
                 std::optional<mode_t> newMode = {});

} // namespace board
