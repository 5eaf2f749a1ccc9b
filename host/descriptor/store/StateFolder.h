#pragma once

#include <optional>
#include <string>

/// The folder "boardctl" of the user's state: $XDG_STATE_HOME, or .local/state in the home folder.
/// It holds backups of images and the journals of writes that have not ended.
namespace board {

/// Its path, whether or not it exists; empty if the environment names none.
std::optional<std::string> stateFolderPath();

/// Its path; the folder is made if it is missing. Throws Error if it can't be made, or if the
/// environment names none; the message offers --backup FILE.
std::string stateFolder();

/// Writes a new file with a unique name that begins with `start`, so that it survives a power
/// failure. Only this user may read it. Returns the name. `what` names the file's purpose in an
/// Error, such as "backup".
std::string writeNewFile(const std::string& start, const std::string& bytes, const char* what);

} // namespace board
