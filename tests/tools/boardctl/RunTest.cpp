#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <regex>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "support/Boardctl.h"
#include "support/Program.h"
#include "support/TempDir.h"

using nlohmann::json;
using support::boardctl;
using support::Outcome;
using support::Program;
using support::TempDir;

namespace {

constexpr char PIPE[] = "/tmp/evt.fifo";

/// A simulated board in a folder, and the pipe out of the way.
class HostedBoard : public testing::Test {
protected:
    void SetUp() override {
        ::unlink(PIPE);
        ASSERT_EQ(boardctl({"sim", "create", m_dir.path("sim")}).status, 0);
    }
    void TearDown() override { ::unlink(PIPE); }

    std::string profile() const { return m_dir.path("sim/board.toml"); }
    std::vector<std::string> words(std::vector<std::string> more) const {
        more.insert(more.begin(), {BOARDCTL, "--board", profile()});
        return more;
    }
    Outcome call(std::vector<std::string> more) const {
        return Program(words(std::move(more))).finish();
    }

    const TempDir m_dir;
};

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

} // namespace

TEST_F(HostedBoard, PlaysLinesOfOtherProcessesAndTellsOfTheButton) {
    Program run(words({"run", "--panel"})); // not on a terminal: each change of a LED is a line
    ASSERT_TRUE(run.waitForOutput("ready\n"));
    EXPECT_EQ(boardctl({"leds", "send", "line", "call"}).status, 0);
    ASSERT_TRUE(run.waitForOutput("LED 'line' on"));
    EXPECT_EQ(m_dir.read("sim/leds/line.state"), "1");

    // Any program may write, and whatever it writes, a line behind a newline still works.
    const std::string script = "printf 'x%.0s' $(seq 300) > " + std::string(PIPE) +
                               "; printf 'a\\0b\\n\\377\\n' > " + PIPE;
    EXPECT_EQ(Program({"/bin/sh", "-c", script}).finish().status, 0);
    run.signal(SIGHUP); // asks for nothing
    EXPECT_EQ(Program({"/bin/sh", "-c", "printf '\\nline idle\\n' > " + std::string(PIPE)})
                  .finish()
                  .status,
              0);
    ASSERT_TRUE(run.waitForOutput("LED 'line' off"));

    // Several fingers at once: none is lost or taken for another's.
    const std::string presses =
        "for finger in 1 2 3 4; do (for i in 1 2 3 4 5; do \"$0\" --board \"$1\" sim press "
        "--for 0 || exit 1; done) & pids=\"$pids $!\"; done; "
        "for pid in $pids; do wait $pid || exit 1; done";
    EXPECT_EQ(Program({"/bin/sh", "-c", presses, BOARDCTL, profile()}).finish().status, 0);
    const Outcome watch = call({"button", "watch"});
    EXPECT_EQ(watch.status, 1);
    EXPECT_TRUE(has(watch.err, "board.toml:39: button.device: ")) << watch.err;
    EXPECT_TRUE(has(watch.err, "another program watches this button")) << watch.err;

    const Outcome second = call({"run", "--for", "0"});
    EXPECT_EQ(second.status, 0);
    EXPECT_TRUE(has(second.err, "another program drives the LEDs of this board")) << second.err;
    EXPECT_TRUE(has(second.err, "another program watches")) << second.err;
    EXPECT_TRUE(has(boardctl({"run", "--for", "0"}).err, "the pipe is in use"))
        << "a board of its own";

    run.signalUntilEnded(SIGTERM);
    const Outcome outcome = run.finish();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(has(outcome.out, "firmware: 5.2-dev/1234\n")) << outcome.out;
    EXPECT_TRUE(has(outcome.out, "stopped\n"));
    const std::regex stamped(
        "[0-9-]{10}T[0-9:]{8}\\.[0-9]{3}[+-][0-9]{4} button (pressed|released, held [0-9.e-]+ s)");
    const std::sregex_iterator first(outcome.out.begin(), outcome.out.end(), stamped);
    EXPECT_EQ(std::distance(first, {}), 40) << outcome.out;
}

TEST_F(HostedBoard, EndsWhenAskedAlsoWhereNobodyReadsWhatItPrints) {
    const std::string sink = m_dir.path("sink");
    ASSERT_EQ(::mkfifo(sink.c_str(), 0600), 0);
    const int reader = ::open(sink.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GT(::fcntl(reader, F_SETPIPE_SZ, 4096), 0);
    Program run({"/bin/sh", "-c", "out=$1; shift; exec \"$@\" >\"$out\" 2>&1", "sh", sink, BOARDCTL,
                 "--board", profile(), "run", "--format", "json"});
    pollfd first{reader, POLLIN, 0};
    ASSERT_EQ(::poll(&first, 1, -1), 1);
    run.signal(SIGTERM); // once
    EXPECT_EQ(run.finish().status, 0);
    ::close(reader);
}

TEST_F(HostedBoard, TellsOfADescriptorThatIsNoneOnce) {
    std::filesystem::remove(m_dir.path("sim/eeprom.bin"));
    std::filesystem::create_directory(m_dir.path("sim/eeprom.bin"));
    const Outcome run = call({"run", "--for", "0"});
    EXPECT_EQ(run.status, 0);
    const std::string text = "is not a device file";
    EXPECT_TRUE(has(run.err, text)) << run.err;
    EXPECT_EQ(run.err.find(text), run.err.rfind(text)) << run.err;
    EXPECT_FALSE(has(run.out, "0 tags")) << run.out;
}

TEST_F(HostedBoard, TellsTheInitSystemThatItIsReadyAndThatItStops) {
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    m_dir.path("notify").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::setenv("NOTIFY_SOCKET", m_dir.path("notify").c_str(), 1);
    const Outcome outcome = call({"run", "--for", "0", "--format", "json"});
    ::unsetenv("NOTIFY_SOCKET");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    char text[32];
    for (const std::string expected : {"READY=1", "STOPPING=1"}) {
        const ssize_t count = ::recv(socket, text, sizeof text, MSG_DONTWAIT);
        EXPECT_EQ(std::string(text, count > 0 ? static_cast<std::size_t>(count) : 0), expected);
    }
    ::close(socket);
}

TEST_F(HostedBoard, GoesOnWithoutAButtonThatDisappears) {
    Program run(words({"run", "--format", "json"}));
    ASSERT_TRUE(run.waitForOutput("\"ready\""));
    const int button = ::open(m_dir.path("sim/dev/button").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::write(button, "released", 8), 8); // of a press that nobody saw
    ASSERT_TRUE(run.waitForOutput("\"held_seconds\":null"));
    ::unlink(m_dir.path("sim/dev/button").c_str());
    ASSERT_EQ(::write(button, "pressed", 7),
              7); // the last message, for a watcher that has the pipe open again already
    ASSERT_TRUE(run.waitForOutput("is no longer watched"));
    ::close(button);
    EXPECT_EQ(boardctl({"leds", "send", "line", "call"}).status, 0);
    ASSERT_TRUE(run.waitForOutput("\"line call\""));
    run.signalUntilEnded(SIGINT);
    const Outcome outcome = run.finish();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(has(outcome.err, "FAILED TO OPEN BUTTON FILE: ")) << outcome.err;
    std::istringstream lines(outcome.out);
    for (std::string line; std::getline(lines, line);)
        EXPECT_TRUE(json::accept(line)) << line;

    ::mkfifo(m_dir.path("sim/dev/button").c_str(), 0600);
    Program watch(words({"button", "watch"}));
    while (call({"sim", "press", "--for", "0"}).status != 0)
        ; // nobody watches yet
    ASSERT_TRUE(watch.waitForOutput("button released"));
    watch.signalUntilEnded(SIGTERM);
    EXPECT_EQ(watch.finish().status, 0);
}

TEST_F(HostedBoard, RefusesAButtonThatWouldSpinAndLedsThatAreNotThere) {
    m_dir.write("board.toml", "[button]\ndevice = 'board.toml'\n[leds]\n[[leds.file]]\nmask = "
                              "1\npath = 'led:none at all'\n"
                              "[[leds.file]]\nmask = 2\npath = 'gone'\n[firmware]\ninfo = '.'\n"
                              "[preferences]\nfile = '.'\n");
    const Outcome run = boardctl({"--board", m_dir.path("board.toml"), "run", "--for", "0"});
    EXPECT_EQ(run.status, 0);
    for (const char* const text :
         {"board.toml:2: button.device: ",
          "is not a button (expected a pipe or a character device)",
          "board.toml:6: leds.file[0].path: led:none at all: there is no LED",
          "firmware: ", "is not a file (expected text lines)",
          "boardctl: preferences: ", "is not a file (expected lines 'key = value')"})
        EXPECT_TRUE(has(run.err, text)) << text << "\n" << run.err;
    const Outcome firmware = boardctl({"--board", m_dir.path("board.toml"), "firmware"});
    EXPECT_EQ(firmware.status, 1);
    EXPECT_TRUE(has(firmware.err, "board.toml:11: firmware.info: ")) << firmware.err;
    EXPECT_TRUE(has(firmware.err, "is not a file")) << firmware.err;

    // A device whose reads return nothing at once.
    m_dir.write("board.toml", "[button]\ndevice = '/dev/null'\n");
    const Outcome watch = boardctl({"--board", m_dir.path("board.toml"), "button", "watch"});
    EXPECT_EQ(watch.status, 1);
    EXPECT_TRUE(has(watch.err, "/dev/null returned no message")) << watch.err;
}

TEST_F(HostedBoard, BridgesAButtonFromAnInputDeviceOnly) {
    EXPECT_EQ(boardctl({"button", "bridge", "/dev/null"}).status, 2) << "which board?";
    for (const auto& [device, reason] :
         {std::pair<std::string, std::string>{"/dev/null", "is not an input device"},
          {profile(), "is not an input device"},
          {m_dir.path("gone"), "can't open: No such file or directory"}}) {
        const Outcome outcome = call({"button", "bridge", device});
        EXPECT_EQ(outcome.status, 1) << device;
        EXPECT_TRUE(has(outcome.err, device + ": " + reason)) << outcome.err;
    }
}

TEST(LedsSend, SaysWhyALineCanNotBeSentAndNeverWaits) {
    ::unlink(PIPE);
    for (const std::vector<std::string>& words : {std::vector<std::string>{"a"},
                                                  {"a", ""},
                                                  {"a b", "c"},
                                                  {"a", "b\n"},
                                                  {"a", "\t"},
                                                  {"a", "b", "x"},
                                                  {"a", "b", "2147483648"},
                                                  {"a", "b", "0x10"},
                                                  {"a", "b", ""},
                                                  {std::string(70, 'a'), "b", "-12345678"}}) {
        std::vector<std::string> all{"leds", "send"};
        all.insert(all.end(), words.begin(), words.end());
        EXPECT_EQ(boardctl(all).status, 2) << words.back();
    }
    EXPECT_TRUE(has(boardctl({"leds", "send", "a", "b"}).err, "there is no such pipe"));
    ASSERT_EQ(::mkfifo(PIPE, 0666), 0);
    const Outcome alone = boardctl({"leds", "send", "a", "b"});
    EXPECT_EQ(alone.status, 1);
    EXPECT_TRUE(has(alone.err, "nobody reads the pipe")) << alone.err;

    const int reader = ::open(PIPE, O_RDWR | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(boardctl({"leds", "send", std::string(68, 'a'), "b", "-01234567"}).status, 0)
        << "is decimal";
    char text[100];
    EXPECT_EQ(::read(reader, text, sizeof text), 80);
    while (::write(reader, "x", 1) == 1)
        ; // to the last byte
    const Outcome full = boardctl({"leds", "send", "a", "b"});
    EXPECT_EQ(full.status, 1);
    EXPECT_TRUE(has(full.err, "the pipe is full")) << full.err;
    ::close(reader);
    ::unlink(PIPE);
}

TEST(Leds, ChecksAndPreviewsWithoutAServiceOrAPipe) {
    ::unlink(PIPE);
    EXPECT_EQ(boardctl({"leds", "check"}).out, "no mistakes\n");
    const TempDir dir;
    dir.write("board.toml",
              "[leds]\n[[leds.command]]\nword1 = 'a'\nword2 = 'b'\nmask = 0\naction = 'roll-up'\n");
    const Outcome check =
        boardctl({"--board", dir.path("board.toml"), "leds", "check", "--format", "json"});
    EXPECT_EQ(check.status, 1);
    EXPECT_EQ(json::parse(check.out)["mistakes"].size(), 1U);

    const Outcome preview =
        boardctl({"leds", "preview", "--ticks", "6", "--at", "1 line call", "--at",
                  "4 all defaults", "--at", "3 line idle", "--format", "json"});
    EXPECT_EQ(preview.status, 0) << preview.err;
    const json waves = json::parse(preview.out);
    EXPECT_EQ(waves["ticks"], 6);
    EXPECT_EQ(waves["leds"][1], (json{{"mask", 2}, {"wave", "011000"}}));
    EXPECT_EQ(boardctl({"leds", "preview", "--format", "svg"}).out.rfind("<svg ", 0), 0U);
    for (const char* const at : {"0 a b", "a b", "5", "-1 a b", "1 a\nb"})
        EXPECT_EQ(boardctl({"leds", "preview", "--at", at}).status, 2) << at;
    EXPECT_EQ(boardctl({"leds", "check", "--format", "svg"}).status, 2);
    EXPECT_NE(::access(PIPE, F_OK), 0);
}

TEST(SystemInformation, GivesOneDocumentOrOneALine) {
    const Outcome cpu = boardctl({"cpu", "--period", "0.1", "--count", "2", "--format", "json"});
    EXPECT_EQ(cpu.status, 0) << cpu.err;
    std::istringstream lines(cpu.out);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        const json load = json::parse(line);
        EXPECT_LE(load["last"], 100);
        EXPECT_TRUE(load["mid"].is_null()) << line;
    }
    EXPECT_EQ(count, 2);
    EXPECT_EQ(boardctl({"cpu", "--period", "0"}).status, 2);
    EXPECT_EQ(boardctl({"firmware"}).out, "5.2-dev/1234\n");
    const Outcome gone = boardctl({"firmware", "/nowhere", "--format", "json"});
    EXPECT_EQ(gone.status, 1);
    EXPECT_EQ(json::parse(gone.out)["error"],
              "OPEN '/nowhere' FAILED (/nowhere: can't open: No such file or directory)");
}
