#include <csignal>
#include <cstdlib>
#include <filesystem>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "HostedBoard.h"

using support::expectTranscript;
using support::HostedBoard;
using support::Program;

TEST_F(HostedBoard, WatchesItsDevicesShowsAnAlarmOnItsLedsAndAnswers) {
    expectTranscript(m_dir, R"sh(
$ printf '[watch]\nperiod_s = 0.1\non_alarm = "line call"\non_clear = "line idle"\n' >>board.toml
)sh");
    const auto setTemperature = [&](const std::string& text) { // in one step
        m_dir.write("new", text);
        std::filesystem::rename(m_dir.path("new"), m_dir.path("sim/dev/temperature"));
    };
    Program run(words({"run", "--panel", "--cpu", "0.1"}));
    ASSERT_TRUE(run.waitForOutput("ready\n"));
    setTemperature("99000\n");
    ASSERT_TRUE(run.waitForOutput("LED 'line' on"));
    expectTranscript(m_dir, R"sh(
$ boardctl --board board.toml --format json status | tr -d ' \n' | grep -oE '"alarms":..[^}]*of85|"counters".*dropped":.|"firmware":[^}]*|"tick_ms":[0-9]*'
"firmware":{"version":"5.2-dev/1234"
"alarms":[{"kind":"temperature-over","device":"thermal","text":"thermal'thermal':99.000degreesCelsius,overitsmaximumof85
"tick_ms":100
"counters":{"led_lines_handled":1,"led_lines_unknown":0,"button_presses":0,"events_dropped":0
$ json --board board.toml leds why line | cut -c 1-55
{ "leds": [ { "name": "line", "mask": 2, "color": "yell
$ boardctl --board board.toml leds why line | cut -c 1-59
line         on
  driven by  row 3 'line call 0' (on), by 'line call' since
)sh");
    setTemperature("41500\n");
    ASSERT_TRUE(run.waitForOutput("41.500 degrees Celsius, below its maximum of 85\n"));
    ASSERT_TRUE(run.waitForOutput("LED 'line' off"));
    ASSERT_TRUE(run.waitForOutput("CPU load "));
    run.end(SIGINT);
    EXPECT_NE(run.finish().err.find(
                  " thermal 'thermal': 99.000 degrees Celsius, over its maximum of 85\n"),
              std::string::npos);
}

TEST_F(HostedBoard, PicksUpItsButtonAndPipeAndEndsAnAlarmOfAnEarlierHostOnItsLeds) {
    expectTranscript(m_dir, R"sh(
$ printf '[watch]\nperiod_s = 0.1\non_alarm = "line call"\non_clear = "line idle"\n' >>board.toml
$ mkdir memory; echo 99000 >sim/dev/temperature
)sh");
    const auto hosting = runWith("RUNTIME_DIRECTORY=" + m_dir.path("memory"));
    Program first(hosting);
    ASSERT_TRUE(first.waitForOutput("LED command: line call\n"));
    first.end(SIGINT);
    expectTranscript(m_dir, R"sh(
$ rm /tmp/evt.fifo; echo x >/tmp/evt.fifo; mv sim/dev/button button
)sh");
    Program second(hosting);
    ASSERT_TRUE(second.waitForOutput("ready\n"));
    expectTranscript(m_dir, R"sh(
$ rm /tmp/evt.fifo; mv button sim/dev/button
)sh");
    ASSERT_TRUE(second.waitForOutput("LED commands are read from"));
    ASSERT_TRUE(second.waitForOutput("button can be used again\n"));
    expectTranscript(m_dir, R"sh(
$ RUNTIME_DIRECTORY=memory boardctl --board board.toml status | grep -e sequencer -e Button
LED sequencer                      running, commands are read from /tmp/evt.fifo
Button                             watched, 0 presses so far
)sh");
    second.end(SIGINT);
    m_dir.write("sim/dev/temperature", "41500\n");
    Program third(hosting);
    ASSERT_TRUE(third.waitForOutput("LED command: line idle\n"));
    third.end(SIGINT);
}

TEST_F(HostedBoard, TakesOverTheLedsAndThePipeOfAHostThatEnds) {
    expectTranscript(m_dir, "\n$ printf '[watch]\\nperiod_s = 0.1\\n' >>board.toml\n");
    Program first(words({"run"}));
    ASSERT_TRUE(first.waitForOutput("ready\n"));
    Program second(words({"run"}));
    ASSERT_TRUE(second.waitForOutput("ready\n"));
    first.end(SIGINT);
    ASSERT_TRUE(second.waitForOutput("this host drives the LEDs now"));
    ASSERT_TRUE(second.waitForOutput("the service that read them has ended\n"));
    expectTranscript(m_dir, "\n$ boardctl leds send line call\n");
    ASSERT_TRUE(second.waitForOutput("LED command: line call\n"));
    second.end(SIGINT);
}

TEST_F(HostedBoard, TellsTheInitSystemWhatItDoes) {
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    m_dir.path("notify").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    expectTranscript(m_dir, R"sh(
$ NOTIFY_SOCKET=$PWD/notify boardctl --board board.toml run --for 0 >log 2>messages
$ NOTIFY_SOCKET=`printf %0108d 0` boardctl --board board.toml run --for 0 2>&1 >log | grep NOTIFY | cut -c 1-46
boardctl: NOTIFY_SOCKET: the path is too long:
$ NOTIFY_SOCKET=@gone boardctl --board board.toml run --for 0 2>&1 >log | grep NOTIFY
boardctl: NOTIFY_SOCKET: @gone: Connection refused
$ for i in 1 9223372036854775807 no; do WATCHDOG_USEC=$i boardctl --board board.toml run --for 0 >log; done; tail -n 1 log
stopped
$ mkdir a b; RUNTIME_DIRECTORY=$PWD/a:$PWD/b boardctl --board board.toml run --for 0 >log; ls a b
a:
leds

b:
)sh");
    const auto told = [&] {
        char text[64];
        const ssize_t count = ::recv(socket, text, sizeof text, 0);
        return std::string(text, count > 0 ? static_cast<std::size_t>(count) : 0);
    };
    EXPECT_EQ(told(), "READY=1");
    EXPECT_EQ(told(), "STATUS=7 devices, no alarm");
    EXPECT_EQ(told(), "STOPPING=1");
    std::vector<std::string> hosting =
        runWith("WATCHDOG_USEC=20000 NOTIFY_SOCKET=" + m_dir.path("notify"));
    hosting[2] += " --format json";
    Program run(hosting);
    EXPECT_EQ(told(), "READY=1");
    EXPECT_EQ(told(), "STATUS=7 devices, no alarm");
    EXPECT_EQ(told(), "WATCHDOG=1");
    const int other = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    ASSERT_EQ(::connect(other, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    while (::send(other, "x", 1, 0) == 1) {
    }
    ASSERT_TRUE(run.waitForOutput("NOTIFY_SOCKET")); // the queue is full
    while (told() != "x") {
    }
    while (told() != "WATCHDOG=1") { // the host has not given up
    }
    run.end(SIGINT);
    ::close(socket);
    ::close(other);
}

TEST_F(HostedBoard, AnswersEvenIfNobodyReadsWhatItPrints) {
    const std::string sink = m_dir.path("sink");
    ASSERT_EQ(::mkfifo(sink.c_str(), 0600), 0);
    const int reader = ::open(sink.c_str(), O_RDWR | O_CLOEXEC);
    expectTranscript(m_dir, "\n$ sed -i 's/tick_ms.*/tick_ms = 1/' sim/board.toml; printf "
                            "'[watch]\\nperiod_s = 0.1\\n' >>sim/board.toml\n");
    Program run({"/bin/sh", "-c", "out=$1; shift; exec \"$@\" >\"$out\" 2>&1", "sh", sink, BOARDCTL,
                 "--board", m_dir.path("board.toml"), "run", "--format", "json"});
    std::string printed;
    char chunk[4096];
    while (printed.find("\"ready\"") == std::string::npos) {
        const ssize_t count = ::read(reader, chunk, sizeof chunk);
        ASSERT_GT(count, 0);
        printed.append(chunk, static_cast<std::size_t>(count));
    }
    ASSERT_GT(::fcntl(reader, F_SETPIPE_SZ, 4096), 0); // filled by the events of 100 lines
    expectTranscript(m_dir, R"sh(
$ for i in 1 2 3 4 5 6 7 8 9 10; do printf 'a b\na b\na b\na b\na b\na b\na b\na b\na b\na b\n' >/tmp/evt.fifo; done
$ ask() { boardctl --board board.toml status --format json; }; until ask >answer; grep -q 'led_lines_unknown": 100' answer; do :; done
)sh");
    // Nothing is lost.
    printed.clear();
    std::size_t lines = 0;
    while (lines < 100) {
        const ssize_t count = ::read(reader, chunk, sizeof chunk);
        ASSERT_GT(count, 0);
        printed.append(chunk, static_cast<std::size_t>(count));
        lines = 0;
        for (std::size_t at = 0;
             (at = printed.find("led-command-unknown", at)) != std::string::npos; ++at)
            ++lines;
    }
    run.end(SIGINT);
    ::close(reader);
    EXPECT_EQ(run.finish().status, 0);
}
