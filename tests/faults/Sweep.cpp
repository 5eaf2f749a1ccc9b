#include "faults/Sweep.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace fs = std::filesystem;
using support::Outcome;

namespace faults {

namespace {

// A product, a MAC address, a text, the terminator; the rest is erased.
const std::string IMAGE = std::string("\x00\x2D\x00\x08\x12\x34\xAB\xCD"
                                      "\x00\x01\x00\x0C\x02\x00\x00\x00\x00\x07\x00\x00"
                                      "\x00\x05\x00\x08one\x00"
                                      "\x00\x00\x00\x04",
                                      32) +
                          std::string(32, '\xFF');

/// The ways in which a call of that name can fail, each as the end of a plan.
std::vector<std::string> waysOf(const std::string& name, bool isEdit) {
    const auto with = [](int error, const char* more = "") { return std::to_string(error) + more; };
    const std::string SHORT = "0";
    std::vector<std::string> ways;
    if (name == "read" || name == "pread")
        ways = {with(EIO), with(EINTR), SHORT, with(EIO, ":persists")};
    else if (name == "write" || name == "pwrite" || name == "writev")
        ways = {with(ENOSPC), with(EINTR), SHORT, with(EIO, ":persists")};
    else if (name == "open" || name == "openat" || name == "fopen" || name == "fopen64")
        ways = {with(ENOENT), with(EINTR)};
    else if (name == "fgets")
        ways = {with(EIO, ":persists")};
    else if (name == "fsync" || name == "flock")
        ways = {with(EIO), with(EINTR)};
    else if (name == "fstat")
        ways = {with(EIO), with(EIO, ":persists")};
    else
        ways = {with(EIO)};
    if (isEdit && (name == "write" || name == "rename"))
        ways.push_back(with(EIO, ":unlink")); // the new file can't be removed either
    return ways;
}

/// Removes what differs between runs: processor times and the names of temporary files and backups.
std::string steady(std::string text) {
    static const std::pair<std::regex, const char*> CHANGING[] = {
        {std::regex("[0-9]+ %"), "N %"},
        {std::regex("\"(last|mid|longest)\": ?[0-9]+"), "\"$1\":N"},
        {std::regex("(board_cpu_load_ratio.*) .*"), "$1 N"},
        {std::regex("-[0-9]{8}T[0-9]{6}Z\\.\\w{6}"), "-DATE"}};
    for (const auto& [pattern, replacement] : CHANGING)
        text = std::regex_replace(text, pattern, replacement);
    return text;
}

bool startsWith(const std::string& text, const std::string& start) {
    return text.rfind(start, 0) == 0;
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// Whether a driver handles that by itself: it reads and writes its device once and accepts a short
/// count.
bool isDriversOwn(const std::string& call, const std::string& how) {
    return how == "0" && contains(call, "/board/dev/");
}

/// Whether the message says that a device's state could not be restored.
bool isLeftToItself(const std::string& name, const std::string& message) {
    return startsWith(name, "board/dev/") &&
           (contains(message, "restore the former state") || contains(message, "the device holds"));
}

} // namespace

bool Command::isJson() const {
    return std::find(words.begin(), words.end(), "json") != words.end();
}

Sweep::Sweep(const Command& command) : m_command(command) {
    ::setenv("XDG_STATE_HOME", path("state").c_str(), 1);
    ::setenv("TMPDIR", path("tmp").c_str(), 1);
    m_dir.makeFolder("tmp");
    m_dir.write("image", IMAGE);
    m_dir.write("tags.json", R"([{"id":45,"data":"00000000"},{"id":0,"data":""}])");
    fs::create_symlink("image", path("link"));
    EXPECT_EQ(support::Program({BOARDCTL, "sim", "create", path("board")}).finish().status, 0);
    m_dir.write("board/dev/fan", "170\n");
    m_dir.write("board/dev/status", "1\n");
    ::unsetenv("TMPDIR"); // not for this program's own files
    m_before = files();
}

Sweep::Files Sweep::files() const {
    Files found;
    const std::string root = path("");
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const std::string name = entry.path().string().substr(root.size());
        found[name] = entry.is_symlink()        ? "<link>"
                      : entry.is_regular_file() ? m_dir.read(name)
                      : entry.is_directory()    ? "<folder>"
                                                : "<pipe>";
    }
    return found;
}

void Sweep::restore() const {
    const Files found = files();
    for (const auto& [name, content] : found)
        if (m_before.count(name) == 0)
            fs::remove_all(path(name));
    for (const auto& [name, content] : m_before)
        if (found.at(name) != content)
            m_dir.write(name, content);
}

Outcome Sweep::outcomeOf(const std::string& plan, const std::string& out) const {
    std::vector<std::string> words = {BOARDCTL};
    for (const std::string& word : m_command.words)
        words.push_back(std::regex_replace(word, std::regex("@"), path("")));
    const std::pair<const char*, std::string> SETTINGS[] = {
        {"LD_PRELOAD", FAULTS_SHIM},
        {"TMPDIR", path("tmp")},
        {"FAULTS_PLAN", plan},
        {"FAULTS_TRACE", plan == "0:0" ? path("trace") : ""}};
    for (const auto& [name, value] : SETTINGS)
        ::setenv(name, value.c_str(), 1);
    support::Program program(words, out);
    for (const auto& [name, value] : SETTINGS)
        ::unsetenv(name);
    return program.finish();
}

void Sweep::learnTheUndisturbedResult() {
    restore();
    const Outcome undisturbed = outcomeOf("0:0");
    ASSERT_EQ(undisturbed.status, 0) << undisturbed.err;
    m_printed = steady(undisturbed.out);
    std::istringstream trace(m_dir.read("trace"));
    for (std::string line; std::getline(trace, line);)
        m_calls.push_back(line);
    fs::remove(path("trace"));
    m_after = files();
    ASSERT_FALSE(m_calls.empty()) << "no call reached the shim";
    if (!m_command.edits.empty()) {
        ASSERT_NE(m_after.at(m_command.edits), m_before.at(m_command.edits)) << "edits nothing";
    }
}

void Sweep::run() {
    ASSERT_NO_FATAL_FAILURE(learnTheUndisturbedResult());
    for (std::size_t i = 0; i < m_calls.size(); ++i) {
        if (i > 0 && startsWith(m_calls[i], "fgets ") && m_calls[i] == m_calls[i - 1])
            continue; // reading the first line has read the whole of so short a file
        const std::string name = m_calls[i].substr(0, m_calls[i].find(' '));
        for (const std::string& how : waysOf(name, !m_command.edits.empty())) {
            const std::string plan = std::to_string(i + 1) + ":" + how;
            restore();
            const Outcome outcome = outcomeOf(plan);
            SCOPED_TRACE(plan + " " + m_calls[i] + "\nstatus " + std::to_string(outcome.status) +
                         ", " + outcome.err);
            check(outcome, m_calls[i], how);
            checkFiles(outcome, m_calls[i], how);
        }
    }
    restore();
}

void Sweep::runWithoutOutput() {
    ASSERT_NO_FATAL_FAILURE(learnTheUndisturbedResult());
    restore();
    const Outcome outcome = outcomeOf("0:0", "/dev/full");
    fs::remove(path("trace"));
    EXPECT_EQ(outcome.status, m_printed.empty() ? 0 : 1);
    EXPECT_EQ(contains(outcome.err, "can't write to standard output"), !m_printed.empty())
        << outcome.err;
    checkFiles(outcome, "", "");
}

void Sweep::check(const Outcome& outcome, const std::string& call, const std::string& how) const {
    EXPECT_TRUE(outcome.status == 0 || outcome.status == 1);
    EXPECT_TRUE(outcome.status == 0 || contains(outcome.err, "boardctl: "));
    if (m_command.isStreaming) {
        std::istringstream lines(outcome.out);
        for (std::string line; m_command.isJson() && std::getline(lines, line);)
            EXPECT_TRUE(nlohmann::json::accept(line)) << line;
        return;
    }
    if (m_command.isJson()) {
        EXPECT_TRUE(nlohmann::json::accept(outcome.out)) << outcome.out;
    }
    if (outcome.status == 0 && !isDriversOwn(call, how)) {
        EXPECT_EQ(steady(outcome.out), m_printed);
    }
    const bool isOfAnEdit = startsWith(call, "write ") || startsWith(call, "pwrite ") ||
                            startsWith(call, "pread ") || startsWith(call, "fsync ");
    if (!m_command.edits.empty() && isOfAnEdit && how == std::to_string(EINTR)) {
        EXPECT_EQ(outcome.status, 0) << "was not repeated";
    }
}

void Sweep::checkFiles(const Outcome& outcome, const std::string& call,
                       const std::string& how) const {
    const auto valueIn = [](const Files& all, const std::string& name) {
        const auto found = all.find(name);
        return found == all.end() ? "<none>" : found->second;
    };
    const Files found = files();
    const bool isDone = outcome.status == 0;
    for (const auto& [name, content] : found) {
        const std::string before = valueIn(m_before, name), after = valueIn(m_after, name);
        if (content == before || content == after || m_command.isStreaming ||
            isDriversOwn(call, how) || isLeftToItself(name, outcome.err))
            continue;
        const bool isNamed =
            contains(outcome.err, name.substr(name.rfind('/') + 1) + " can't be removed");
        if (startsWith(name, "state/") || name == "kept") {
            if (content != "<folder>" && !isNamed) {
                EXPECT_EQ(content, m_before.at(m_command.edits))
                    << name << " is not a complete backup";
            }
        } else if (startsWith(name, "tmp/")) {
            // The folder of a temporary board, if a call failed while it was removed.
            EXPECT_TRUE(startsWith(call, "openat ")) << name << " is left";
        } else {
            EXPECT_TRUE(isNamed) << name << " is left";
        }
    }
    for (const auto& [name, content] : m_before)
        EXPECT_EQ(found.count(name), 1U) << name << " is gone";
    if (m_command.isStreaming || isDriversOwn(call, how))
        return;
    if (isDone)
        for (const auto& [name, content] : m_after)
            if (!startsWith(name, "state/")) {
                EXPECT_EQ(valueIn(found, name) == content, true)
                    << name << " is not as it should be";
            }
    if (!m_command.edits.empty() && !isDone) {
        const std::string& image = found.at(m_command.edits);
        EXPECT_EQ(image == m_after.at(m_command.edits),
                  contains(outcome.err, "was replaced") || contains(outcome.err, "was written"));
    }
}

} // namespace faults
