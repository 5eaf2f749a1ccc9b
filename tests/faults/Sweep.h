#pragma once

#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "support/Program.h"
#include "support/TempDir.h"

namespace faults {

/// A command of boardctl whose calls fail in turn. In its words "@" is its working folder, which
/// holds a simulated board in "board", an image file "image" with a link "link" to it, and tags in
/// "tags.json". Backups go to "state", temporary files to "tmp".
struct Command {
    std::string name;
    std::vector<std::string> words;
    std::string edits{};      ///< the image that it changes, as a path in the folder
    bool isStreaming = false; ///< its output depends on timing
    bool isJson() const;
};

inline std::ostream& operator<<(std::ostream& out, const Command& command) {
    return out << command.name;
}

class Sweep {
public:
    explicit Sweep(const Command& command);

    std::string path(const std::string& name) const { return m_dir.path(name); }

    /// Runs the command without faults, then once for each way in which each of its calls can fail,
    /// and checks the result and the files.
    void run();

    /// Runs it with a standard output that can't be written.
    void runWithoutOutput();

private:
    /// Contents by path in the folder. For anything but a regular file, its kind.
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
