#pragma once

namespace boardctl {

/// Parses the words and runs the command. Then ends the program or, if there was nothing to run or
/// it failed, returns the exit status. Messages go to standard error. Call it once.
int runCommandLine(int argc, char** argv);

} // namespace boardctl
