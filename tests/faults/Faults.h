#pragma once

#include <string>
#include <vector>

/// System calls that fail where a test asks for it.
///
/// `Shim.cpp` stands before the C library's calls on files. Linked into a test program it obeys
/// `begin` and `end`; preloaded into another program it obeys the environment:
///
///     FAULTS_PLAN=CALL:ERROR[:persists][:NAME]   as below; NAME is a call that always fails
///     FAULTS_TRACE=FILE                          gets the trace when the program ends
///
/// Calls on descriptors 0 to 2 are passed over: they are not the program's files.
namespace faults {

struct Plan {
    unsigned call = 0; ///< which call fails, counted from 1 over all of them; 0: none
    int error = 0;     ///< what it sets errno to; 0: it succeeds, but reads or writes one byte only
    bool persists = false; ///< all later calls of the same name fail too
    const char* also = ""; ///< the name of a call that always fails, with EIO; empty: none
};

/// Counts from now on, and does as planned.
void begin(const Plan& plan);

/// Lets all calls through again. Returns what was called since `begin`, each as its name and its
/// file.
std::vector<std::string> end();

} // namespace faults
