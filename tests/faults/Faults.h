#pragma once

#include <atomic>
#include <string>
#include <vector>

/// Calls that fail when a test asks for it.
///
/// `Shim.cpp` defines the C library's calls on files in front of the library's own definitions.
/// Linked into a test program it obeys the functions below; preloaded into another program it obeys
/// the environment:
///
///     FAULTS_PLAN=NAME CALL ERROR   the members of a plan, separated by blanks
///     FAULTS_TRACE=FILE             the trace is written there when the program ends
///
/// `Memory.cpp` does the same for operator new. Calls on descriptors 0 to 2 are not counted.
namespace faults {

struct Plan {
    const char* name; ///< of the call that fails, such as "read"
    unsigned call;    ///< which one of that name, counted from 1; 0: none
    int error;        ///< its errno; 0: it moves one byte only. If negative, all later calls of the
                      ///< name fail too, and so does every removal of a file; KILLED or more:
                      ///< the program is killed
};

/// As the error of a plan: kills the program with SIGKILL once the call is done. A call that writes
/// moves only as many bytes as the error exceeds this number.
constexpr int KILLED = 1000;

enum class Verdict { PASS, FAIL, SHORT, KILL };

/// Starts to count calls and to make them fail as planned.
void begin(const Plan& plan);

/// Stops both.
void end();

/// What was called between the last `begin` and `end`: each call's name and file, and "for writing"
/// if it opened the file to change it.
std::vector<std::string> trace();

/// Counts a call and decides on it; sets errno if it fails.
Verdict judge(const char* name, const char* file);

extern std::atomic<long> blocksHeld; ///< allocated with operator new and not yet deleted

} // namespace faults
