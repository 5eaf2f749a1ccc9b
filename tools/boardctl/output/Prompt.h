#pragma once

#include <string>

namespace boardctl {

/// Asks on standard error, so that standard output holds results only, and returns if the answer on
/// standard input is "y" or "yes". Throws Declined otherwise: with `refused`, or with `unasked` if
/// standard input is not a terminal.
void expectYes(const std::string& question, const std::string& refused, const std::string& unasked);

} // namespace boardctl
