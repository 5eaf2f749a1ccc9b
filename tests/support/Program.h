#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace support {

/// What a finished program left.
struct Outcome {
    int status; ///< exit status; -1 where a signal ended it
    std::string out;
    std::string err;
};

/// A running program with its standard output and error in files of its own.
class Program {
public:
    /// Starts `words`, the program's path first. `out` replaces standard output by a file of that
    /// name.
    explicit Program(const std::vector<std::string>& words, const std::string& out = "");
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void signal(int number) const;

    /// Waits until standard output holds `text`; false where the program ended without it.
    bool waitForOutput(const std::string& text);

    /// Sends the signal again and again: one may come just before the call that it shall interrupt.
    void signalUntilEnded(int number);

    Outcome finish();

private:
    pid_t m_pid = -1;
    int m_status = -1;
    int m_out = -1;
    int m_err = -1;
};

} // namespace support
