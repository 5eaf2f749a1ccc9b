#pragma once

#include <string>

namespace boardweb {

/// Prints a line on standard error. `isError` marks it as an error for the journal.
void logLine(const std::string& text, bool isError = false);

} // namespace boardweb
