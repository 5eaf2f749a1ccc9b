#pragma once

namespace boardweb {

/// Serves until the program is asked to end. Returns its exit status.
int runCommandLine(int argc, char** argv);

} // namespace boardweb
