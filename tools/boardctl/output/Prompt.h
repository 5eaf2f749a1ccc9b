#pragma once

#include <string>

namespace boardctl {

/// Asks on standard error, because standard output is for results only. Returns if the answer on
/// standard input is "y", "Y" or "yes". Otherwise, throws Declined: with `unasked` if standard
/// input is not a terminal, else with `refused`.
void expectYes(const std::string& question, const std::string& refused, const std::string& unasked);

} // namespace boardctl
