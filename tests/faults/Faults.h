#pragma once

#include <atomic>
#include <string>
#include <vector>

/// Makes calls fail as a test plans.
///
/// `Shim.cpp` defines the C library's functions on files again, with precedence over the originals.
/// Linked into a test program, it obeys the functions below. Preloaded into another program, it
/// obeys the environment:
///
///     FAULTS_PLAN=NAME CALL ERROR   the members of a plan, separated by blanks
///     FAULTS_TRACE=FILE             the trace is written there when the program ends
///
/// `Memory.cpp` does the same for operator new. Calls on descriptors 0 to 2 are not counted.
namespace faults {

struct Plan {
    const char* name; ///< of the call that fails, such as "read"
    unsigned call;    ///< which call of that name, counted from 1; 0: none
    int error;        ///< the errno; 0: the call moves one byte only. If negative, later calls of
                      ///< that name and later removals of files fail too, with -error. KILLED or
                      ///< more: the program is killed
};

/// As the error of a plan, KILLED + n kills the program with SIGKILL right after the call. If the
/// call reads or writes, it moves at most n bytes.
constexpr int KILLED = 1000;

enum class Verdict { PASS, FAIL, SHORT, KILL };

/// Starts to count calls, and makes them fail as planned.
void begin(const Plan& plan);

/// Stops counting calls and making them fail.
void end();

/// What was called between the last `begin` and `end`: each call's name and file, and "for writing"
/// if it opened the file to change it.
std::vector<std::string> trace();

/// Counts a call and decides what it does; sets errno if it is to fail.
Verdict judge(const char* name, const char* file);

extern std::atomic<long> blocksHeld; ///< blocks from operator new that are not deleted yet

} // namespace faults
