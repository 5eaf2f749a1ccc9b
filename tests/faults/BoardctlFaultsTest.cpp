#include <algorithm>
#include <cerrno>
#include <map>
#include <regex>
#include <sstream>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <unistd.h>

#include "faults/BoardctlRuns.h"

using faults::contains;
using faults::OTHER;
using support::Outcome;

namespace {

/// The errors to plan for each call, by a pattern of its name.
const std::pair<std::regex, std::vector<int>> WAYS[] = {
    {std::regex("p?read"), {EIO, EINTR, 0, -EIO}},
    {std::regex("p?writev?"), {ENOSPC, EINTR, 0, -EIO}},
    {std::regex("(__|f)?open.*"), {ENOENT, EINTR}},
    {std::regex("fsync|flock"), {EIO, EINTR}},
    {std::regex("fstat|rename"), {EIO, -EIO}},
    {std::regex("fgets"), {-EIO}},
    {std::regex(".*"), {EIO}},
};

/// Calls that an edit of an image needs: if one fails, so does the edit.
const std::regex MUST_SUCCEED("^(p?write|pread|fsync|fchmod|fchown|rename) ");

/// Removes what differs from run to run: processor loads and the dates in backup names.
std::string steady(const std::string& text) {
    static const std::regex CHANGING("[0-9]+ %|\"(last|mid|longest|since_boot)\": ?[0-9]+|"
                                     "cpu_load_ratio.*|-[0-9]{8}T[0-9]{6}Z\\.\\w{6}");
    return std::regex_replace(text, CHANGING, "$1");
}

class BoardctlFaults : public faults::BoardctlRuns {
protected:
    /// Checks what is printed and left by a run in which `call` failed.
    void check(const Outcome& outcome, const std::string& call, int error) const {
        const bool isStreaming = contains(GetParam(), "--for 0.02");
        const std::string& message = outcome.err;
        const bool isDone = outcome.status == 0;
        // For `leds check`, a file that it can't examine is a finding, not an error.
        const bool isFound = outcome.status == 3 && contains(GetParam(), "leds check") &&
                             contains(outcome.out, "Input/output error");
        EXPECT_TRUE(isDone || isFound || (outcome.status == 1 && contains(message, "boardctl: ")));
        const Files found = files();
        for (const auto& each : m_before)
            EXPECT_EQ(found.count(each.first), 1U) << each.first << " is gone";
        if (contains(GetParam(), "format json")) {
            std::istringstream documents(isStreaming ? outcome.out : "");
            EXPECT_TRUE(isStreaming || nlohmann::json::accept(outcome.out)) << outcome.out;
            for (std::string line; std::getline(documents, line);)
                EXPECT_TRUE(nlohmann::json::accept(line)) << line;
        }
        // A driver reads and writes in one call, and a short count is not an error for it.
        if (isStreaming || (error == 0 && contains(call, "/board/dev/")))
            return;
        // The metrics report a device that is down as a figure, and the command succeeds.
        const bool isDown = contains(GetParam(), "metrics") &&
                            std::regex_search(outcome.out, std::regex("device_up\\{.*\\} 0"));
        if (isDone && !isDown) {
            EXPECT_EQ(steady(outcome.out), m_printed);
        }
        if (!m_edited.empty() && error != 0 && std::regex_search(call, MUST_SUCCEED)) {
            EXPECT_EQ(isDone, error == EINTR) << "only an interrupted call is repeated";
        }
        checkFiles(found, isDone, message, call);
    }

    void checkFiles(const Files& found, bool isDone, const std::string& message,
                    const std::string& call) const {
        const auto isIn = [](const Files& all, const auto& file) {
            const auto place = all.find(file.first);
            return place != all.end() && place->second == file.second;
        };
        for (const auto& file : found) {
            const auto& [name, content] = file;
            const bool isBackup = name.rfind("state", 0) == 0 || name == "kept";
            const bool isSaid =
                contains(message, name.substr(name.rfind('/') + 1) + " can't be removed") ||
                (name.rfind("board/dev/", 0) == 0 &&
                 (contains(message, "restore the previous state") ||
                  contains(message, "the device holds"))) ||
                // the next run needs the journal to repair the device
                (contains(name, "/unfinished-") && contains(message, "COULD NOT BE WRITTEN BACK"));
            EXPECT_TRUE(isIn(m_before, file) || isIn(m_after, file) || isSaid ||
                        (isBackup && (content == OTHER || content == m_before.at(m_edited))) ||
                        // the folder of a temporary board, which could not be removed
                        (name.rfind("tmp/", 0) == 0 && call.rfind("openat ", 0) == 0))
                << name << " is left or damaged";
        }
        for (const auto& file : m_after)
            EXPECT_TRUE(!isDone || file.first.rfind("state", 0) == 0 || isIn(found, file))
                << file.first << " is not as it should be";
        if (!m_edited.empty() && !isDone) {
            EXPECT_EQ(found.at(m_edited) == m_after.at(m_edited),
                      contains(message, "was replaced") || contains(message, "was written"));
        }
    }

    Files m_after;
    std::string m_printed;
    std::string m_edited; ///< the image that the command changes, if any
};

} // namespace

TEST_P(BoardctlFaults, EndWithTheWholeResultOrAMessageAndEverythingAsItWas) {
    const bool isSending = contains(GetParam(), "leds send"),
               isPressing = contains(GetParam(), "sim press");
    const std::string pipe = isSending    ? "/tmp/evt.fifo"
                             : isPressing ? m_dir.path("board/dev/button")
                                          : "/dev/null";
    ::mkfifo(pipe.c_str(), 0666); // fails if the file exists, as the board's does
    const int open = ::open(pipe.c_str(), O_RDWR | O_CLOEXEC);
    const support::Program reader({"/bin/cat", pipe});
    if (GetParam().rfind("status #", 0) == 0 || contains(GetParam(), "leds why"))
        startHost();
    const Outcome undisturbed = run("none 0 0");
    ASSERT_EQ(undisturbed.status, 0) << undisturbed.err;
    m_printed = steady(undisturbed.out);
    m_after = files();
    for (const char* const image : {"image", "board/eeprom.bin"})
        if (m_after.at(image) != m_before.at(image))
            m_edited = image;
    const std::vector<std::string> calls = trace();
    ASSERT_FALSE(calls.empty()) << "the calls do not pass the shim";
    std::map<std::string, unsigned> counts;
    std::string last;
    for (const std::string& call : calls) {
        const std::string name = call.substr(0, call.find(' '));
        const std::string number = std::to_string(++counts[name]);
        if (name == "fgets" && call == std::exchange(last, call))
            continue; // the file is short: the first fgets reads all of it
        const auto ways = std::find_if(std::begin(WAYS), std::end(WAYS), [&](const auto& way) {
            return std::regex_match(name, way.first);
        });
        for (const int error : ways->second) {
            const std::string plan = name + " " + number + " " + std::to_string(error);
            const Outcome outcome = run(plan);
            SCOPED_TRACE(plan + ", " + call + "\nstatus " + std::to_string(outcome.status) + ", " +
                         outcome.err);
            check(outcome, call, error);
        }
    }
    const Outcome unheard = run("none 0 0", "/dev/full");
    EXPECT_EQ(unheard.status, undisturbed.out.empty() ? 0 : 1);
    EXPECT_EQ(contains(unheard.err, "can't write to standard output"), unheard.status == 1);
    ::close(open);
}

// The output of commands with "--for 0.02" differs from run to run.
INSTANTIATE_TEST_SUITE_P(
    Commands, BoardctlFaults,
    testing::Values(
        "info #", "info # --format json", "info # --format metrics", "fan --sim",
        "fan # --format json", "fan full #", "temp #", "power # --format json", "led status #",
        "led status 2 # --format json", "led status bi on --for 0.01 #", "led status bi off #",
        "led status blink 2 10 #", "bd show @image", "bd show # --format json", "bd raw @image",
        "bd dump @image", "bd check # --format json", "bd get 45 -i @image --format json",
        "bd mac list #", "bd put 5=text:two 0x800E=u32:1 # -y -q --format json",
        "bd put 1=mac:02:00:00:00:00:0a/3 -i @image", "bd write @other -i @image --fill FF",
        "bd write @tags.json # -y --format json", "bd backups --format json",
        "bd build @tags.json -o @image --format json",
        "bd build @tags.json 5=text:two -o @new --size 64",
        "bd compare @list.json @image --format json", "bd compare @board/eeprom.bin #",
        "bd check @image @link --format json", "bd set 45=hex:00000001 -i @image",
        "bd set 5=text:two -i @link --backup @kept", "bd set 45=hex:00000001 # -y --format json",
        "bd remove 5 -i @image --format json", "bd mac add 02:00:00:00:00:0a # -y --backup @kept",
        "leds check # --format json", "leds preview --ticks 4 # --format json",
        "leds send system ready", "status #", "status # --format json", "status # --format metrics",
        "leds why power #", "cpu --period 0.1", "cpu --period 0.1 --format json",
        "firmware @board/image-info", "firmware # --format json", "sim create @made", "sim press #",
        "button watch --for 0.02 # --format json", "run --for 0.02 # --format json"),
    [](const auto& each) { return faults::nameOf(each.param); });
