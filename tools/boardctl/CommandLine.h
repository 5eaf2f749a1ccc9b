#pragma once

namespace boardctl {

/// Parses the words, runs the command and exits with its status. Only if there is no command to run
/// or the command throws, returns the exit status. Messages go to standard error. Call it once.
int runCommandLine(int argc, char** argv);

} // namespace boardctl
