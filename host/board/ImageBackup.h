#pragma once

#include <string>

namespace board {

/// Keeps the bytes of an image in a file of their own, whole and synced, and returns the file's name.
///
/// `file` is replaced at once by the new one, but never by a `damaged` image where it holds something. With
/// an empty `file` it is a new one, dated and named after `image`, in the folder "boardctl" of the user's
/// state ($XDG_STATE_HOME, or .local/state at home). Throws Error where the bytes can't be kept.
std::string keepImage(const std::string& bytes, const std::string& image, const std::string& file,
                      bool damaged);

} // namespace board
