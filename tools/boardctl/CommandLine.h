#pragma once

namespace boardctl {

/// Parses the words, runs the command and exits with its status. Returns the exit status only if
/// there is no command to run or the command throws. Messages go to standard error. Call it once.
int runCommandLine(int argc, char** argv);

} // namespace boardctl
