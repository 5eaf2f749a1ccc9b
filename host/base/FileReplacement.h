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
/// killed before that, the new file stays as `.NAME.new-content`, and the next replacement removes
/// it. A device or a sysfs file can't be replaced that way: it is locked and written from its start
/// in one call. One thread at a time.
class FileReplacement {
public:
    /// BY_KIND replaces a file and writes a device in place. IN_PLACE also writes an ordinary file
    /// in place, for a file that simulates a board's device. UNREAD does not lock an ordinary file:
    /// nothing of what it held is needed, and whoever may read it could hold the lock for ever.
    enum class Manner { BY_KIND, IN_PLACE, UNREAD };

    /// Waits for the lock on `path` as `wait` tells. A file that does not exist is not locked;
    /// `commit` creates it, and replaces one that has appeared in the meantime. Throws Error for
    /// folders, pipes and sockets, if the file can't be opened or locked, and for a file with
    /// several names (hard links): the others would keep the old content.
    explicit FileReplacement(const std::string& path, Manner manner = Manner::BY_KIND,
                             const LockWait& wait = {});

    /// Whether there was a file when this object was made; it is locked since then, unless UNREAD.
    bool exists() const { return m_lock.isOpen(); }

    /// Who may read and write the locked file. Throws Error if that can't be found out.
    FileAccess access() const;

    /// Whether `commit` writes in place.
    bool isInPlace() const { return m_inPlace; }

    /// The content of the locked file, or the first `limit` bytes if it is written in place. Throws
    /// Error if it can't be read, does not exist, is a file of more than `limit` bytes, or if a
    /// pipe or folder has taken its place.
    std::string content(std::size_t limit) const;

    /// Makes `bytes` the content. A new file is read back and compared before it replaces the old
    /// one; the content of a device is not compared. Throws Error on failure. A file is then
    /// unchanged unless the message says that it was replaced; a device may hold part of the bytes.
    /// The message also names a temporary file that could not be removed. `newMode` is for a file
    /// that did not exist; without it, the umask decides.
    void commit(const std::string& bytes, std::optional<mode_t> newMode = {});

private:
    void writeInPlace(const std::string& bytes) const;

    const std::string m_path; ///< as the user named it, for messages
    std::string m_target;     ///< what `path` leads to through symbolic links
    FileDescriptor m_lock;    ///< not open if the file does not exist yet
    bool m_inPlace = false;
};

/// A file of lines to which programs append, such as the record of a station. Several may do so at
/// the same time: a line is written in one call.
class LineFile {
public:
    /// Opens the file; creates it if it is missing. Throws Error if that is not possible, and for a
    /// pipe: without a reader it drops what was appended, and with a slow one it blocks.
    explicit LineFile(const std::string& path);

    /// Appends the line and a newline, and syncs. If a power failure has cut off the last line, the
    /// new one still begins on its own line. Throws Error on failure.
    void append(const std::string& line) const;

    /// Whether the file has exactly this line; false for pipes and devices, which are not read.
    /// Throws Error if it can't be read.
    bool holds(const std::string& line) const;

private:
    const std::string m_path;
    const FileDescriptor m_file;
};

/// Replaces a file, UNREAD, in one call.
void replaceFile(const std::string& path, const std::string& bytes,
                 std::optional<mode_t> newMode = {});

} // namespace board
