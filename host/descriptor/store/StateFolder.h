#pragma once

#include <optional>
#include <string>

/// The state folder is "boardctl" in $XDG_STATE_HOME, or in .local/state of the home folder. It
/// holds backups of images and the journals of unfinished writes.
namespace board {

/// Its path, whether or not the folder exists; empty if the environment names no such folder.
std::optional<std::string> stateFolderPath();

/// Its path; the folder is created if it is missing. Throws Error if it can't be created, or if the
/// environment names none; the message suggests --backup FILE.
std::string stateFolder();

/// Writes and syncs a new file with a unique name that begins with `start`; it survives a power
/// failure. Only this user may read it. Returns the name. `what` names the file's purpose in an
/// Error, such as "backup".
std::string writeNewFile(const std::string& start, const std::string& bytes, const char* what);

} // namespace board
