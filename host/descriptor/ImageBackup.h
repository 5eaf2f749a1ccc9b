#pragma once

#include <string>

namespace board {

/// Keeps the bytes of an image in a file of their own, whole and synced, and returns the file's
/// name.
///
/// `file` must be a new one, or hold nothing. With an empty `file` it is dated and named after
/// `image`, in the folder "boardctl" of the user's state ($XDG_STATE_HOME, or .local/state at
/// home). Throws Error where the bytes can't be kept.
std::string keepImage(const std::string& bytes, const std::string& image, const std::string& file);

} // namespace board
