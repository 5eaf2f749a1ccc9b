#pragma once

namespace boardctl {

/// Parses the words, runs the command and returns the exit status. Messages go to standard error.
int runCommandLine(int argc, char** argv);

} // namespace boardctl
