#pragma once

namespace boardctl {

/// Parses the words, runs the command and ends the program, or returns the exit status. Messages go
/// to standard error. Called once.
int runCommandLine(int argc, char** argv);

} // namespace boardctl
