#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace support {

/// The result of a finished program.
struct Outcome {
    int status; ///< exit status; -1 if a signal ended it
    std::string out;
    std::string err;
};

/// A running program whose standard output and error go to files.
class Program {
public:
    /// Starts `words`, beginning with the program's path. Standard output goes to the existing file
    /// `out`, if one is named.
    explicit Program(const std::vector<std::string>& words, const std::string& out = "");
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void signal(int number) const;
    /// Sends the signal and waits until the program has ended.
    void end(int number);

    /// Waits until standard output contains `text`; false if the program ends without it.
    bool waitForOutput(const std::string& text);

    /// Waits until the program waits in a system call. Then interrupts the call with the signal.
    void signalInItsSleep(int number) const;

    Outcome finish();

private:
    pid_t m_pid = -1;
    int m_status = -1;
    int m_out = -1;
    int m_err = -1;
};

} // namespace support
