#pragma once

#include <string>

#include "base/Error.h"

namespace board {

/// A file that the profile names. Its existence is not checked until it is used.
struct NamedPath {
    std::string path;
    std::string place; ///< the entry that names it, for messages: "FILE:LINE: KEY"
};

/// Calls `action` with the path. If the action throws an Error, its message is prefixed with the
/// place that names the path.
template <class Action>
void withPlaceInErrors(const NamedPath& named, Action action) {
    try {
        action(named.path);
    } catch (const Error& error) {
        throw Error(named.place + ": " + error.what());
    }
}

} // namespace board
