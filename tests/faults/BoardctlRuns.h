#pragma once

#include <cctype>
#include <filesystem>
#include <map>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/Program.h"
#include "support/TempDir.h"

namespace faults {

// A product, a MAC address, a text and the terminator, followed by erased bytes.
inline const std::string IMAGE = std::string("\x00\x2D\x00\x08\x12\x34\xAB\xCD"
                                             "\x00\x01\x00\x0C\x02\x00\x00\x00\x00\x07\x00\x00"
                                             "\x00\x05\x00\x08one\x00"
                                             "\x00\x00\x00\x04",
                                             32) +
                                 std::string(32, '\xFF');

// Longer than a page of an EEPROM.
inline const std::string OTHER_IMAGE = std::string("\x00\x2D\x00\x08\x56\x78\x00\x01"
                                                   "\x00\x05\x00\x44",
                                                   12) +
                                       std::string(64, 'x') + std::string("\x00\x00\x00\x04", 4);

inline bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

inline constexpr char OTHER[] = "<folder or pipe>";

/// Runs boardctl in a folder with a simulated board, an image, a link to the image and a list of
/// tags. The calls of boardctl are traced and fail as planned. The test's parameter is the command:
/// "@" stands for the folder and "#" for the board.
class BoardctlRuns : public testing::TestWithParam<std::string> {
protected:
    using Files =
        std::map<std::string, std::string>; ///< content by path; OTHER if it is not a file

    BoardctlRuns() {
        m_dir.makeFolder("tmp");
        m_dir.write("image", IMAGE);
        m_dir.write("tags.json", R"([{"id":45,"data":"00000000"},{"id":0,"data":""}])");
        m_dir.write("other", OTHER_IMAGE);
        m_dir.write("list.json",
                    R"([{"id":45,"any":true},{"id":1,"size":8},{"id":5,"matches":"on."}])");
        std::filesystem::create_symlink("image", m_dir.path("link"));
        support::Program({BOARDCTL, "sim", "create", m_dir.path("board")}).finish();
        m_dir.write("board/dev/fan", "170\n");
        m_dir.write("board/dev/status", "1\n");
        m_before = files();
    }

    /// Starts a program that answers in place of a host of the board, until the end of the test.
    void startHost() {
        const std::string end = m_trace.path("end");
        ::mkfifo(end.c_str(), 0600);
        m_end = ::open(end.c_str(), O_RDWR | O_CLOEXEC);
        m_host = std::make_unique<support::Program>(std::vector<std::string>{
            "/bin/sh", "-c", CANNED_HOST " \"$0\" <\"$1\"", m_dir.path("board/board.toml"), end});
        ASSERT_TRUE(m_host->waitForOutput("ready"));
        m_before = files();
    }
    ~BoardctlRuns() override { ::close(m_end); }

    Files files() const {
        Files found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_dir.path(""))) {
            const std::string name = entry.path().string().substr(m_dir.path("").size());
            found[name] = entry.is_symlink()        ? "<link>"
                          : entry.is_regular_file() ? m_dir.read(name)
                                                    : OTHER;
        }
        return found;
    }

    /// Restores all files, then runs the command, whose calls fail as planned.
    support::Outcome run(const std::string& plan, const std::string& out = "") const {
        return run(GetParam(), plan, out);
    }
    support::Outcome run(const std::string& command, const std::string& plan,
                         const std::string& out) const {
        restore();
        return runAgain(command, plan, out);
    }

    void restore() const {
        for (const auto& [name, content] : files())
            if (m_before.count(name) == 0)
                std::filesystem::remove_all(m_dir.path(name));
            else if (m_before.at(name) != content)
                m_dir.write(name, m_before.at(name));
    }

    /// Runs the command like `run`, but with the files as the last run left them.
    support::Outcome runAgain(const std::string& command, const std::string& plan,
                              const std::string& out = "") const {
        std::vector<std::string> words = {"/usr/bin/env",
                                          "LD_PRELOAD=" FAULTS_SHIM,
                                          "XDG_STATE_HOME=" + m_dir.path("state"),
                                          "TMPDIR=" + m_dir.path("tmp"),
                                          "FAULTS_TRACE=" + m_trace.path("trace"),
                                          "FAULTS_PLAN=" + plan,
                                          BOARDCTL};
        std::istringstream line(inFolder(command));
        for (std::string word; line >> word;)
            words.push_back(word);
        return support::Program(words, out).finish();
    }

    /// The calls of the last run.
    std::vector<std::string> trace() const {
        std::vector<std::string> calls;
        std::istringstream lines(m_trace.read("trace"));
        for (std::string call; std::getline(lines, call);)
            calls.push_back(call);
        return calls;
    }

    std::string inFolder(const std::string& text) const {
        const std::string words =
            std::regex_replace(text, std::regex("#"), "--board @board/board.toml");
        return std::regex_replace(words, std::regex("@"), m_dir.path(""));
    }

    const support::TempDir m_dir;
    const support::TempDir m_trace;
    int m_end = -1; ///< closing it ends `m_host`
    std::unique_ptr<support::Program> m_host;
    Files m_before;
};

/// The name of a test, from its command.
inline std::string nameOf(const std::string& command) {
    std::string name = command;
    for (char& c : name)
        c = std::isalnum(c) ? c : '_';
    return name;
}

} // namespace faults
