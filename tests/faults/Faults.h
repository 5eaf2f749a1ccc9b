#pragma once

#include <string>
#include <vector>

/// System calls that fail when a test asks for it.
///
/// `Shim.cpp` replaces the C library's calls on files. Linked into a test program it obeys `begin`
/// and `end`; preloaded into another program it obeys the environment:
///
///     FAULTS_PLAN=CALL:ERROR[:persists][:NAME]   as below; NAME is a call that always fails
///     FAULTS_TRACE=FILE                          the trace is written there when the program ends
///
/// Calls on descriptors 0 to 2 are ignored: they are not the program's files.
namespace faults {

struct Plan {
    unsigned call = 0;     ///< the call that fails, counted from 1 over all calls; 0: none
    int error = 0;         ///< its errno; 0: it succeeds, but reads or writes only one byte
    bool persists = false; ///< all later calls of the same name fail too
    const char* also = ""; ///< the name of a call that always fails, with EIO; empty: none
};

/// Starts counting calls and follows the plan.
void begin(const Plan& plan);

/// Lets all calls succeed again. Returns the calls since `begin`, each as its name and its file.
std::vector<std::string> end();

} // namespace faults
