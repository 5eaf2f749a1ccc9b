#pragma once

#include <string>

namespace boardctl {

/// Prints a message on standard error.
void complain(const std::string& what);

/// Flushes standard output. False if not everything could be written; the first such call prints a
/// message on standard error.
bool flushOutput();

} // namespace boardctl
