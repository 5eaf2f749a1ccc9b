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

/// A file that is written under a temporary name and renamed to its own name when it is complete
/// and synced. Even if the program is killed or the power fails, nobody finds an incomplete file
/// under its own name.
///
/// The temporary name is `.NAME.new-content`, where NAME is the file name of `beside`. If something
/// else has that name, such as a link or another user's file, the temporary name is
/// `.NAME.new-content.XXXXXX` with six letters or digits. The file is locked while it is written. A
/// file that a killed program has left is removed by the next program that writes beside the same
/// file. That program removes only ordinary files that have one of these two names and no other
/// hard link, that nobody has locked, and that belong to this user or to `access->owner`.
struct NewFile {
    std::string path;   ///< as messages name it
    std::string beside; ///< absolute
    std::string target; ///< absolute, in the folder of `beside`; replaced if it exists
    /// The access of the file that this file replaces or copies. If empty, this file gets the mode
    /// that the umask grants.
    std::optional<FileAccess> access;
    /// Whether this is a copy of a file's old content, not its replacement. Only root can always
    /// set the owner and group, so a copy may have different ones. Its mode is then reduced so that
    /// nobody except the copy's owner can read it unless they may read the original.
    bool isCopy = false;
};

/// Writes the file, reads it back and compares, then renames it to `target` and syncs the folder.
/// Throws Error on failure. `target` is then as before, unless the failure was that the folder
/// could not be synced. The message also names a temporary file that could not be removed. One
/// thread.
void putNewFile(const NewFile& file, const std::string& bytes);

} // namespace board
