#pragma once

#include <optional>
#include <string>

#include <sys/types.h>

#include "base/FileDescriptor.h"

namespace board {

/// Who may read and write a file.
struct FileAccess {
    uid_t owner;
    gid_t group;
    mode_t mode; ///< the permission bits
};

/// Empty if the open file can't be examined; the reason is then in `errno`.
std::optional<FileAccess> tryAccessOf(const FileDescriptor& file);

/// A file that is written under a temporary name and gets its own name when it is complete and
/// synced. Even if the program is killed or the power fails, nobody finds part of it under that
/// name.
///
/// The temporary name is `.NAME.new-content`, and NAME is the file name of `beside`. If something
/// else is in the way there, such as a link or another user's file, it is
/// `.NAME.new-content.XXXXXX` with six letters or digits. The file is locked while it is written.
/// What a killed program has left is removed by the next one that writes beside the same file:
/// ordinary files with one of these two names and no hard link, which nobody has locked and which
/// belong to this user or to `access->owner`.
struct NewFile {
    std::string path;   ///< as messages name it
    std::string beside; ///< absolute
    std::string target; ///< absolute, in the folder of `beside`; replaced if it exists
    /// Of the file whose content this replaces or keeps. If empty, the file gets the mode that the
    /// umask grants.
    std::optional<FileAccess> access;
    /// Whether this is a copy of a file's old content, not its replacement. A copy may have another
    /// owner and group, because only root can always set them. Its mode is then reduced so that
    /// nobody else can read it who may not read the original.
    bool isCopy = false;
};

/// Writes the file, reads it back and compares, then renames it to `target` and syncs the folder.
/// Throws Error on failure. `target` is then as before, unless only the folder could not be synced.
/// The message also names a temporary file that could not be removed. One thread.
void putNewFile(const NewFile& file, const std::string& bytes);

} // namespace board
