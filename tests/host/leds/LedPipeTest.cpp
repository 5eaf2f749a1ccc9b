#include "leds/LedPipe.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/FileDescriptor.h"
#include "support/Failure.h"

using board::LED_PIPE;
using support::failureOf;

namespace {

/// The pipe with a reader that reads when it is asked to.
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

    /// Takes the turn from other senders, or returns it to them.
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

TEST(LedPipeClaim, KnowsWhoMayWrite) {
    for (const auto& [mode, writers] : {std::pair(0602U, "everybody"),
                                        {0620U, "its owner and group"},
                                        {0644U, "its owner alone"}}) {
        ::unlink(LED_PIPE);
        ASSERT_TRUE(::mkfifo(LED_PIPE, 0600) == 0 && ::chmod(LED_PIPE, mode) == 0);
        EXPECT_EQ(board::LedPipeClaim().writers(), writers);
    }
    ::unlink(LED_PIPE);
}

TEST(LedPipeClaim, RejectsAnythingElseInThePipesPlace) {
    const auto expectFault = [](const std::string& fault) {
        try {
            const board::LedPipeClaim claim;
            ADD_FAILURE() << fault;
        } catch (const board::Error& error) {
            EXPECT_EQ(error.what(), LED_PIPE + fault);
        }
    };
    ASSERT_EQ(::mkdir(LED_PIPE, 0700), 0);
    expectFault(": is not a pipe (expected a pipe or no file: remove it)");
    ::rmdir(LED_PIPE);
    ASSERT_EQ(::symlink("/nowhere/at all", LED_PIPE), 0);
    expectFault(": can't open the pipe: No such file or directory");
    ::unlink(LED_PIPE);
}

TEST(SendLedLine, NamesWhoMayWriteIfTheUserMayNot) {
    ::unlink(LED_PIPE);
    ASSERT_TRUE(::mkfifo(LED_PIPE, 0400) == 0 && ::chmod(LED_PIPE, 0400) == 0);
    // Root may write in spite of the mode, so it becomes another user. Anybody else owns the pipe.
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
