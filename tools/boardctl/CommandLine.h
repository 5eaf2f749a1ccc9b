#pragma once

namespace boardctl {

/// Parses the words, runs the command and ends the program with the command's exit status. If there
/// is no command to run or the command throws, returns the exit status instead. Messages go to
/// standard error. Call it once.
int runCommandLine(int argc, char** argv);

} // namespace boardctl
