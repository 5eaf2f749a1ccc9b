#pragma once

#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "support/Program.h"
#include "support/TempDir.h"

namespace faults {

/// A command of boardctl, each of whose calls shall fail in turn. In its words "@" stands for the
/// folder it works in: there are a simulated board in "board", an image file "image" with a link
/// "link" to it, and tags in "tags.json". Backups go to "state", temporary files to "tmp".
struct Command {
    std::string name;
    std::vector<std::string> words;
    std::string edits{};      ///< the image that it changes, as a path in the folder
    bool isStreaming = false; ///< what it prints depends on what happens when
    bool isJson() const;
};

inline std::ostream& operator<<(std::ostream& out, const Command& command) {
    return out << command.name;
}

class Sweep {
public:
    explicit Sweep(const Command& command);

    std::string path(const std::string& name) const { return m_dir.path(name); }

    /// Runs the command undisturbed, then once for each way in which each of its calls can fail,
    /// and checks what each has left.
    void run();

    /// Runs it on a standard output that takes nothing.
    void runWithoutOutput();

private:
    /// By path in the folder; what is no file has only its kind.
    using Files = std::map<std::string, std::string>;

    Files files() const;
    void restore() const;
    support::Outcome outcomeOf(const std::string& plan, const std::string& out = "") const;
    void learnTheUndisturbedResult();
    void check(const support::Outcome& outcome, const std::string& call,
               const std::string& how) const;
    void checkFiles(const support::Outcome& outcome, const std::string& call,
                    const std::string& how) const;

    const Command m_command;
    const support::TempDir m_dir;
    Files m_before;
    Files m_after;
    std::vector<std::string> m_calls;
    std::string m_printed;
};

} // namespace faults
