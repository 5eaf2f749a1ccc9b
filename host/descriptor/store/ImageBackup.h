#pragma once

#include <string>

namespace board {

/// Writes the bytes of an image to a backup file and syncs it. Returns the file's name.
///
/// `file` must not exist yet, or be empty. If no `file` is named, the backup is named after `image`
/// and the date, in the folder "boardctl" of the user's state ($XDG_STATE_HOME, or .local/state in
/// the home folder). Throws Error if the backup can't be written.
std::string keepImage(const std::string& bytes, const std::string& image, const std::string& file);

} // namespace board
