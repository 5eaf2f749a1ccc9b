#pragma once

#include <string>

#include "base/FileDescriptor.h"

namespace board {

/// Replaces the content of a file so that every reader sees the old or the new content whole, and
/// writers take turns.
///
/// A file is locked where it lies behind symbolic links, rewritten beside itself with its owner and
/// mode, synced and renamed into place. What can't be replaced that way, a device or a file of the
/// system's device tree, is locked itself and written from its start in one call. One thread at a
/// time.
class FileReplacement {
public:
    /// BY_KIND does what the file asks for; IN_PLACE writes an ordinary file like a device, as one
    /// that stands for a board's device is.
    enum class Manner { BY_KIND, IN_PLACE };

    /// Waits for the lock on `path`. A file that does not exist yet is made by `commit`; nothing is
    /// locked then, and `commit` replaces one that has appeared in between. Throws Error for
    /// folders, pipes and sockets, and where the file can't be opened or locked.
    explicit FileReplacement(const std::string& path, Manner manner = Manner::BY_KIND);

    /// Whether `commit` writes into the device itself.
    bool isInPlace() const { return m_inPlace; }

    /// What the locked file holds, of a device the first `limit` bytes. Throws Error where it can't
    /// be read, does not exist, or is a file of more than `limit` bytes.
    std::string content(std::size_t limit) const;

    /// Makes `bytes` the content. Throws Error with the reason; a file then is as it was,
    /// unless the reason says that it was replaced; a device may hold part of the bytes. A new file
    /// is read back and compared before it takes the old one's place; what a device holds
    /// afterwards is for the caller to compare. The reason also names a new file that could not be
    /// removed again.
    void commit(const std::string& bytes);

private:
    void rewriteBeside(const std::string& bytes) const;
    void writeInPlace(const std::string& bytes) const;

    const std::string m_path; ///< as the user named it, for messages
    std::string m_target;     ///< behind symbolic links
    FileDescriptor m_lock;    ///< not open if the file does not exist yet
    bool m_inPlace = false;
};

/// One replacement from lock to commit.
void replaceFile(const std::string& path, const std::string& bytes);

} // namespace board
