#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "faults/Sweep.h"

using faults::Command;
using faults::Sweep;

// The commands that open pipes. That of the LED service has the same path on every machine.

namespace {

constexpr char LED_PIPE[] = "/tmp/evt.fifo";

/// Reads everything written into a pipe while it lives.
class Reader {
public:
    explicit Reader(const std::string& pipe) : m_pipe(::open(pipe.c_str(), O_RDWR | O_CLOEXEC)) {
        EXPECT_GE(m_pipe, 0) << pipe;
        m_thread = std::thread([this] {
            char byte = 0;
            while (::read(m_pipe, &byte, 1) == 1 && byte != END) {
            }
        });
    }
    ~Reader() {
        EXPECT_EQ(::write(m_pipe, &END, 1), 1);
        m_thread.join();
        ::close(m_pipe);
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

private:
    static constexpr char END = '\x04';
    int m_pipe;
    std::thread m_thread;
};

const std::string BOARD = "@board/board.toml";

} // namespace

TEST(HostedFaults, ABoardIsHostedOrAMessageSaysWhyNot) {
    Sweep({"", {"run", "--for", "0.2", "--board", BOARD, "--format", "json"}, "", true}).run();
}

TEST(HostedFaults, AButtonIsWatchedOrAMessageSaysWhyNot) {
    Sweep({"", {"button", "watch", "--for", "0.2", "--board", BOARD, "--format", "json"}, "", true})
        .run();
}

TEST(HostedFaults, ALineIsSentOrAMessageSaysWhyNot) {
    ::mkfifo(LED_PIPE, 0666);
    const Reader reader(LED_PIPE);
    Sweep({"", {"leds", "send", "system", "ready"}}).run();
}

TEST(HostedFaults, AButtonIsPressedOrAMessageSaysWhyNot) {
    Sweep sweep({"", {"sim", "press", "--board", BOARD}});
    const Reader reader(sweep.path("board/dev/button"));
    sweep.run();
}
