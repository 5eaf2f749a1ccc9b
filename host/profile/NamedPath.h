#pragma once

#include <string>

#include "base/Error.h"

namespace board {

/// A file that the profile names. Whether it is there is found out where it is used.
struct NamedPath {
    std::string path;
    std::string place; ///< who names it, for messages: "FILE:LINE: KEY"
};

/// Does `action` with the path. An Error that it throws then begins with the place that names the
/// path.
template <class Action>
void use(const NamedPath& named, Action action) {
    try {
        action(named.path);
    } catch (const Error& error) {
        throw Error(named.place + ": " + error.what());
    }
}

} // namespace board
