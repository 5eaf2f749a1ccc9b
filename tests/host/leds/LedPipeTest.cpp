#include "leds/LedPipe.h"
#include "leds/LedLine.h"

#include <vector>

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/FileDescriptor.h"
#include "support/Failure.h"
#include "support/TempDir.h"

using board::LED_PIPE;
using support::failureOf;

namespace {

/// The pipe, with a reader that reads only when a test calls it.
class ReadPipe {
public:
    ReadPipe()
        : m_pipe((::unlink(LED_PIPE), ::mkfifo(LED_PIPE, 0600),
                  ::open(LED_PIPE, O_RDWR | O_NONBLOCK))) {}
    ~ReadPipe() { ::unlink(LED_PIPE); }
    ReadPipe(const ReadPipe&) = delete;
    ReadPipe& operator=(const ReadPipe&) = delete;

    /// What one read of the sequencer returns.
    std::string read() const {
        char bytes[board::MAX_LED_LINE];
        const ssize_t count = ::read(m_pipe.number(), bytes, sizeof bytes);
        return std::string(bytes, count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    void write(const std::string& text) const {
        ASSERT_EQ(::write(m_pipe.number(), text.data(), text.size()),
                  static_cast<ssize_t>(text.size()));
    }

    /// Locks the pipe against other senders that take turns (F_WRLCK), or unlocks it (F_UNLCK).
    void setTurn(short type) const {
        struct flock turn {};
        turn.l_type = type;
        turn.l_whence = SEEK_SET;
        ASSERT_EQ(::fcntl(m_pipe.number(), F_OFD_SETLK, &turn), 0);
    }

private:
    const board::FileDescriptor m_pipe;
};

} // namespace

TEST(LedPipeClaim, LetsNobodyReadAndKnowsWhoMayWrite) {
    const struct group* const group = ::getgrgid(1);
    const std::string groupName = ::geteuid() == 0 && group ? group->gr_name : "",
                      corrected = LED_PIPE + std::string(": others could read commands (mode ");
    struct Row {
        mode_t umask, found, wanted; ///< modes; found: of an existing pipe, 0 if there is none
        std::string writers, correction = {}, group = {};
    };
    std::vector<Row> rows = {{0, 0, 0622, "everybody"},
                             {0007, 0, 0620, "its owner and group"},
                             {0022, 0, 0600, "its owner alone"},
                             {0, 0602, 0602, "everybody"},
                             {0, 0644, 0600, "its owner alone", "644"},
                             {0, 0660, 0620, "its owner and group", "660"}};
    if (!groupName.empty()) {
        rows.push_back({0077, 0, 0620, "its owner and group", "", groupName});
        rows.push_back({0077, 0666, 0620, "its owner and group", "666", groupName});
    }
    for (const Row& row : rows) {
        ::unlink(LED_PIPE);
        if (row.found != 0) {
            ASSERT_TRUE(::mkfifo(LED_PIPE, 0600) == 0 && ::chmod(LED_PIPE, row.found) == 0);
        }
        const mode_t former = ::umask(row.umask);
        const board::LedPipeClaim claim(row.group);
        ::umask(former);
        struct stat status {};
        ASSERT_EQ(::stat(LED_PIPE, &status), 0);
        EXPECT_EQ(status.st_mode, S_IFIFO | row.wanted);
        EXPECT_TRUE(row.group.empty() || status.st_gid == group->gr_gid);
        EXPECT_EQ(claim.writers(), row.writers);
        EXPECT_EQ(claim.correction().substr(0, corrected.size() + 3),
                  row.correction.empty() ? "" : corrected + row.correction);
    }
    ::unlink(LED_PIPE);
}

TEST(LedPipeClaim, LeavesAPipeThatOthersMayReadToTheServiceThatReadsIt) {
    ASSERT_TRUE(::mkfifo(LED_PIPE, 0600) == 0 && ::chmod(LED_PIPE, 0644) == 0);
    {
        const board::FileDescriptor service(::open(LED_PIPE, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        EXPECT_EQ(failureOf([] { const board::LedPipeClaim claim; }),
                  std::string(LED_PIPE) + ": the pipe is in use: another LED service reads it");
    }
    ::unlink(LED_PIPE);
}

TEST(LedPipeClaim, RejectsAnythingElseInThePipesPlace) {
    const auto faultOf = [](const char* group = "") {
        return failureOf([&] { const board::LedPipeClaim claim(group); });
    };
    const std::string pipe = LED_PIPE;
    ASSERT_EQ(::mkdir(LED_PIPE, 0700), 0);
    EXPECT_EQ(faultOf(), pipe + ": is not a pipe (expected a pipe or no file: remove it)");
    ::rmdir(LED_PIPE);
    {
        const support::TempDir dir;
        dir.makePipe("pipe");
        ASSERT_EQ(::symlink(dir.path("pipe").c_str(), LED_PIPE), 0);
        EXPECT_EQ(faultOf(), pipe + ": is a symbolic link (expected a pipe or no file: remove it)");
        EXPECT_EQ(failureOf([] { board::sendLedLine("a b"); }), faultOf());
        ::unlink(LED_PIPE);
    }
    EXPECT_EQ(faultOf("no such group"),
              pipe + ": this machine has no group 'no such group', which the profile names");
    ::unlink(LED_PIPE);
    if (::geteuid() != 0)
        return; // only root can do what follows
    ASSERT_TRUE(::mkfifo(LED_PIPE, 0622) == 0 && ::chown(LED_PIPE, 65534, 65534) == 0);
    EXPECT_EQ(faultOf(),
              pipe +
                  ": belongs to user 65534 (expected a pipe of root or of this user: remove it)");
    ::unlink(LED_PIPE);
    ASSERT_TRUE(::mkfifo(LED_PIPE, 0600) == 0 && ::chmod(LED_PIPE, 0644) == 0);
    ASSERT_EQ(::seteuid(65534), 0);
    const std::string fault = faultOf();
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(fault, pipe + ": belongs to root, and its group is 0 and its mode 644, so others "
                            "could read commands (expected a pipe that only its owner can read)");
    ::unlink(LED_PIPE);
    struct stat folder {};
    ASSERT_TRUE(::stat("/tmp", &folder) == 0 && ::chmod("/tmp", 0777) == 0);
    EXPECT_EQ(faultOf(), pipe + ": other users could replace the pipe, because its folder has the "
                                "mode 777 (expected a sticky folder: `chmod +t /tmp/`)");
    ::chmod("/tmp", folder.st_mode & 07777);
    EXPECT_NE(::access(LED_PIPE, F_OK), 0);
}

TEST(SendLedLine, SendsNothingToAStrangerUnlessAGroupVouchesForHim) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a pipe to another user";
    const ReadPipe pipe;
    const struct {
        gid_t group;
        mode_t mode;
        bool isSent;
    } ROWS[] = {{65534, 0622, false}, {::getegid(), 0602, false}, {::getegid(), 0620, true}};
    for (const auto& row : ROWS) {
        ASSERT_TRUE(::chown(LED_PIPE, 65534, row.group) == 0 && ::chmod(LED_PIPE, row.mode) == 0);
        const std::string fault = failureOf([] { board::sendLedLine("a b"); });
        EXPECT_EQ(fault.substr(0, fault.find(',')),
                  row.isSent ? "no failure" : LED_PIPE + std::string(": belongs to user 65534"));
        EXPECT_EQ(pipe.read(), row.isSent ? "a b\n" : "");
    }
}

TEST(SendLedLine, NamesWhoMayWriteIfTheUserMayNot) {
    ::unlink(LED_PIPE);
    ASSERT_TRUE(::mkfifo(LED_PIPE, 0400) == 0 && ::chmod(LED_PIPE, 0400) == 0);
    // The mode does not bind root, so if this process is root, it becomes another user for a while.
    const uid_t user = ::geteuid();
    ASSERT_EQ(::seteuid(user == 0 ? 65534 : user), 0);
    const std::string fault = failureOf([] { board::sendLedLine("a b"); });
    ASSERT_EQ(::seteuid(user), 0);
    EXPECT_EQ(fault, LED_PIPE + std::string(": no permission to write: its owner alone may"));
    ::unlink(LED_PIPE);
}

TEST(SendLedLine, WritesAtOnceWhatTheNextReadCanHold) {
    const ReadPipe pipe;
    const std::string text(41, 'x'), line(37, 'y'), full = text + "\n" + line + "\n";
    pipe.setTurn(F_WRLCK); // a sender that keeps its turn must not prevent the sends
    for (const std::string& each : {text, line})
        board::sendLedLine(each);
    EXPECT_EQ(failureOf([] { board::sendLedLine(""); }),
              LED_PIPE + std::string(": the pipe holds lines that its reader has not read yet, and "
                                     "'' does not fit"));
    EXPECT_EQ(pipe.read(), full);
}

TEST(SendLedLine, InTurnWaitsForAnEmptyPipeAndForOtherSenders) {
    const ReadPipe pipe;
    pipe.write("x");
    int pauses = 0;
    board::sendLedLineInTurn("a b", [&] {
        if (++pauses == 1) {
            EXPECT_EQ(pipe.read(), "x");
            pipe.setTurn(F_WRLCK);
        } else {
            pipe.setTurn(F_UNLCK);
        }
        return true;
    });
    EXPECT_EQ(pauses, 2);
    EXPECT_EQ(pipe.read(), "a b\n");
}

TEST(SendLedLine, InTurnGivesUpWithoutWriting) {
    const ReadPipe pipe;
    pipe.write("x");
    unsigned pauses = 0;
    const std::string notSent = LED_PIPE + std::string(": 'a b' was not sent: ");
    EXPECT_EQ(failureOf([&] { board::sendLedLineInTurn("a b", [&] { return ++pauses > 0; }); }),
              notSent + "its turn did not come in 300 ticks (the pipe's reader can't keep up)");
    EXPECT_EQ(pauses, 1200U);
    EXPECT_EQ(failureOf([] { board::sendLedLineInTurn("a b", [] { return false; }); }),
              notSent + "interrupted before its turn came");
    EXPECT_EQ(pipe.read(), "x");
}
