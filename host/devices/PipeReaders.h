#pragma once

#include <optional>

#include "base/FileDescriptor.h"

namespace board {

/// Whether a process of this user has a pipe open for reading. Empty if that can't be found out,
/// because the system hides some processes or what they have opened. Looks at every process, so it
/// is for rare cases.
std::optional<bool> isReadByThisUser(const FileIdentity& pipe);

} // namespace board
