#include "LedCtrl.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/Descriptors.h"
#include "support/LogRecorder.h"
#include "support/TempDir.h"
#include "support/Threads.h"

using support::LogRecorder;
using support::TempDir;
using Row = LedCtrl::CmdDef;
using Lines = std::vector<std::string>;

namespace {

constexpr char PIPE[] = "/tmp/evt.fifo";
constexpr unsigned EVERY_OTHER = 0x55555555;

/// The engine without its thread, ticked by hand.
class Sequencer : public LedCtrl {
public:
    explicit Sequencer(const std::vector<Row>& rows, unsigned blinkPattern = EVERY_OTHER,
                       const std::vector<FileNameMap>& files = {},
                       AccessMethod method = ACCESS_FILES, unsigned tickMs = 100)
        : LedCtrl(rows.data(), static_cast<unsigned>(rows.size()), files.data(),
                  static_cast<unsigned>(files.size()), method, tickMs, blinkPattern, NotStarted()) {
    }
    using LedCtrl::nextOutput;
    using LedCtrl::openFiles;
    using LedCtrl::readCmd;
    using LedCtrl::setupDefault;
    using LedCtrl::setupFifo;
    using LedCtrl::testFifo;
    using LedCtrl::update;

    void send(std::string line) { EXPECT_EQ(handleCmd(line.data()), 0); }

    /// Ticks until the blink pattern is loaded: the next tick shows its bit 1.
    void skipToPattern() {
        for (int tick = 0; tick < 33; ++tick)
            nextOutput();
    }

    /// The LEDs lit in the next ticks, as hexadecimal masks: "8 3 -" is LED 3, then LEDs 0 and 1,
    /// then none.
    std::string show(int ticks) {
        std::string text;
        for (; ticks > 0; --ticks) {
            const std::uint32_t output = nextOutput();
            char digits[12];
            std::snprintf(digits, sizeof digits, output ? "%X " : "- ", output);
            text += digits;
        }
        text.pop_back();
        return text;
    }
};

Row row(const char* word, std::uint32_t mask, std::int32_t action, std::int32_t group = 0,
        std::int32_t timeMs = 0, bool isDefault = false) {
    return {word, "x", 0, mask, action, group, timeMs, isDefault};
}

/// Writes any bytes into the service's pipe at once, as a client would.
void writeToPipe(const std::string& bytes) {
    const int pipe = ::open(PIPE, O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(pipe, 0);
    EXPECT_EQ(::write(pipe, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    ::close(pipe);
}

void fill(const std::string& path) {
    const std::string page(4096, ' ');
    const int pipe = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    while (::write(pipe, page.data(), page.size()) > 0) {
    }
    ::close(pipe);
}

/// The command lines in a log.
Lines commandsIn(const Lines& log) {
    const std::string prefix = "DB_FRAMEWORK 7: LED Command: ";
    Lines commands;
    for (const std::string& line : log)
        if (line.rfind(prefix, 0) == 0)
            commands.push_back(line.substr(prefix.size()));
    return commands;
}

std::size_t sizeOf(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? static_cast<std::size_t>(status.st_size) : 0;
}

} // namespace

TEST(LedCtrl, ShowsWhatEachKindOfCommandShows) {
    enum { ON, OFF, BLINK, FLASH, UP, DOWN, STOP, DEFAULTS };
    const struct {
        const char* what;
        std::vector<Row> rows;
        std::vector<std::string>
            commands;      ///< first words, sent one before each tick; "" sends none
        std::string shown; ///< ticks that show bits 1, 2, 3, ... of the pattern 0101...
    } CASES[] = {
        {"steady", {row("on", 5, ON), row("off", 4, OFF)}, {"on", "", "off"}, "5 5 1 1"},
        {"timed", {row("on", 3, ON, 0, 300)}, {"on"}, "3 3 3 - -"},
        {"rounded up to whole ticks", {row("on", 1, ON, 0, 101)}, {"on"}, "1 1 - -"},
        {"1 and 0 ticks because time and sum wrap in 32 bits",
         {row("time", 1, ON, 0, 4294968), row("sum", 2, ON, 0, 4294868)},
         {"time", "sum"},
         "1 - -"},
        {"timed over a static state",
         {row("on", 3, ON), row("t", 2, BLINK, 0, 300)},
         {"on", "t"},
         "3 3 1 3 3 3"},
        {"static blink", {row("b", 2, BLINK)}, {"b"}, "- 2 - 2"},
        {"blink replaces steady and steady replaces blink",
         {row("on", 1, ON), row("b", 1, BLINK)},
         {"on", "", "b", "", "on"},
         "1 1 - 1 1 1"},
        {"off ends blinking",
         {row("b", 1, BLINK), row("off", 1, OFF)},
         {"b", "", "off"},
         "- 1 - -"},
        {"flash", {row("f", 9, FLASH)}, {"", "f"}, "- 9 - -"},
        {"roll up", {row("r", 0xB, UP)}, {"r"}, "2 8 1 2 8 1"},
        {"roll down", {row("r", 0xB, DOWN)}, {"r"}, "8 2 1 8 2 1"},
        {"roll past the ends", {row("r", 0x80000001, UP)}, {"r"}, "80000000 1 80000000"},
        {"timed roll", {row("r", 6, DOWN, 0, 300)}, {"r"}, "4 2 4 - -"},
        {"roll over an empty mask",
         {row("r", 0, UP), row("d", 0, DOWN, 0, 100)},
         {"r", "d"},
         "- - -"},
        {"roll-stop by word and LEDs",
         {row("s", 1, ON), row("r", 3, UP), {"r", "end", 0, 3, STOP, 0, 0, false}},
         {"s", "r", "", "r end 0"},
         "1 2 1 1 1"},
        {"roll-stop ignores a roll of another word",
         {row("q", 0xE, DOWN), row("r", 0xE, UP), {"r", "end", 0, 0xE, STOP, 0, 0, false}},
         {"q", "r", "r end"},
         "8 6 2 8"},
        {"roll-stop ignores other actions and ends one roll at a time, the oldest first",
         {row("r", 0xE, UP),
          {"r", "y", 0, 0xE, DOWN, 0, 0, false},
          {"r", "on", 0, 0xE, ON, 0, 300, false},
          {"r", "end", 0, 0xE, STOP, 0, 0, false}},
         {"r on", "r", "r end", "r", "r y", "r end", "r end"},
         "E E E 2 C 4 -"},
        {"a roll that was stopped leaves its group",
         {row("r", 0xE, UP, 2),
          {"r", "end", 0, 0xE, STOP, 2, 0, false},
          {"r", "y", 0, 0xE, DOWN, 0, 0, false},
          row("on", 1, ON, 2)},
         {"r", "r end", "r y", "on"},
         "2 - 8 5"},
        {"a timed roll that a row of another group stopped",
         {row("r", 6, UP, 2, 900), {"r", "end", 0, 6, STOP, 0, 0, false}, row("on", 1, ON, 2)},
         {"r", "r end", "on"},
         "2 - 1"},
        {"roll-stop with other LEDs frees only those",
         {row("r", 3, UP), {"r", "end", 0, 1, STOP, 0, 0, false}},
         {"r", "", "r end 0", ""},
         "2 1 2 1"},
        {"a row ends its group's last row",
         {row("on", 1, ON, 2), row("b", 2, BLINK, 2)},
         {"on", "b", "", "on"},
         "1 2 - 1"},
        {"including a timed row and a roll",
         {row("s", 7, ON), row("t", 9, ON, 2, 900), row("r", 0x26, UP, 2), row("on", 0x10, ON, 2)},
         {"s", "t", "r", "", "on"},
         "7 F 3 5 17"},
        {"and only what that row set",
         {row("s", 1, ON, 2), row("b", 1, BLINK), row("c", 2, BLINK, 2), row("on", 2, ON),
          row("d", 4, ON, 2)},
         {"s", "b", "c", "on", "d"},
         "1 1 - 3 6 7"},
        {"a row that is sent again starts over",
         {row("t", 1, ON, 2, 200)},
         {"t", "t", "", ""},
         "1 1 1 -"},
        {"but not in group 0 or below",
         {row("a", 1, ON), row("b", 2, ON), row("c", 4, ON, -1), row("d", 8, ON, -1)},
         {"a", "b", "c", "d"},
         "1 3 7 F"},
        {"off ends its group's last row, and only once",
         {row("on", 1, ON, 2), row("off", 2, OFF, 2), row("s", 1, ON), row("b", 4, BLINK, 2),
          row("c", 4, BLINK), row("u", 8, ON, 2)},
         {"on", "off", "s", "b", "off", "c", "u", ""},
         "1 - 1 5 1 5 9 D"},
        {"a timed row that has ended leaves its group",
         {row("t", 1, ON, 2, 100), row("on", 2, ON, 2)},
         {"t", "", "on"},
         "1 - 2"},
        {"an ending action frees LEDs that another owns too",
         {row("s", 1, ON), row("t", 1, BLINK, 0, 100), row("b", 1, BLINK, 0, 900)},
         {"s", "t", "b", "", ""},
         "1 1 1 1 1"},
        {"a negative time wraps and is not stopped by its group",
         {row("t", 1, ON, 2, -500), row("b", 4, BLINK, 0, -500), row("u", 6, ON, 2)},
         {"t", "b", "u"},
         "1 5 3"},
        {"defaults keep static states and end actions and groups",
         {row("s", 3, ON, 2), row("t", 0xA, BLINK, 0, 900), row("start", 4, ON, 0, 0, true),
          row("d", 0, DEFAULTS), row("u", 0x10, ON, 2)},
         {"s", "t", "", "d", "u"},
         "3 B 1 7 17"},
        {"default rows stop their group's last row, and neither group nor off stops a flash",
         {row("d", 0, DEFAULTS), row("s", 8, ON, 2, 0, true), row("f", 1, FLASH, 2, 0, true),
          row("g", 4, FLASH, 2, 0, true), row("on", 2, ON, 2, 0, true),
          row("off", 5, OFF, 0, 0, true)},
         {"d"},
         "7 2"},
        {"a default row whose action is the defaults",
         {row("d", 0, DEFAULTS, 0, 0, true), row("s", 1, FLASH, 0, 0, true)},
         {"", "d"},
         "- 1 -"},
        {"an unknown kind only ends its group's last row",
         {row("on", 1, ON, 2), row("?", 7, 8, 2), row("on2", 2, ON, 2)},
         {"on", "?", "on2"},
         "1 - 2"},
    };
    for (const auto& each : CASES) {
        Sequencer leds(each.rows);
        leds.skipToPattern();
        std::string shown;
        const auto ticks =
            static_cast<std::size_t>(std::count(each.shown.begin(), each.shown.end(), ' ')) + 1;
        for (std::size_t tick = 0; tick < ticks; ++tick) {
            if (tick < each.commands.size() && !each.commands[tick].empty())
                leds.send(each.commands[tick].find(' ') == std::string::npos
                              ? each.commands[tick] + " x"
                              : each.commands[tick]);
            shown += (shown.empty() ? "" : " ") + leds.show(1);
        }
        EXPECT_EQ(shown, each.shown) << each.what;
    }
}

TEST(LedCtrl, LoadsTheBlinkPatternEvery33TicksAndShowsItsLastBitTwice) {
    const std::vector<Row> rows = {row("b", 1, LedCtrl::ACTION_BLINK, 0, 0, true)};
    for (const unsigned pattern : {0x80000001U, 0x00000002U}) {
        Sequencer leds(rows, pattern);
        leds.setupDefault();
        for (int tick = 0; tick < 32; ++tick)
            ASSERT_EQ(leds.nextOutput(), 0U) << tick; // nothing before the first load
        for (int tick = 0; tick < 99; ++tick)
            ASSERT_EQ(leds.nextOutput(), pattern >> std::min(tick % 33, 31) & 1U)
                << pattern << " " << tick;
    }
}

TEST(LedCtrl, FindsTheFirstRowWithTheWordsAndTheNumber) {
    const std::vector<Row> rows = {
        {"a", "b", 0, 0x1, LedCtrl::ACTION_FLASH, 0, 0, false},
        {"a", "b", 0, 0x2, LedCtrl::ACTION_FLASH, 0, 0, false},
        {"a", "b", -7, 0x4, LedCtrl::ACTION_FLASH, 0, 0, false},
        {"A", "b", 0, 0x8, LedCtrl::ACTION_FLASH, 0, 0, false},
        {"a", "", 0, 0x10, LedCtrl::ACTION_FLASH, 0, 0, false},
        {"a", "b", INT32_MAX, 0x20, LedCtrl::ACTION_FLASH, 0, 0, false},
        {"a", "b", INT32_MIN, 0x40, LedCtrl::ACTION_FLASH, 0, 0, false},
        {"", "", 0, 0x80, LedCtrl::ACTION_FLASH, 0, 0, false},
    };
    const struct {
        std::string line;
        std::uint32_t shown;
    } CASES[] = {
        {"a b 0", 0x1},
        {"a b", 0x1},
        {"\t a \v b\r\f", 0x1},
        {"a b x", 0x1},
        {"a b 0 and more", 0x1},
        {"a b -7", 0x4},
        {"a b+0", 0},
        {"a b -7x", 0x4},
        {"A b", 0x8},
        {"a", 0x10},
        {"a b 99999999999999999999", 0x20},
        {"a b 2147483648", 0x20},
        {"a b -99999999999999999999", 0x40},
        {"", 0x80},
        {"a b 1", 0},
        {"b a 0", 0},
        {"ab 0", 0},
        {"a b 0x7", 0x1},
        {std::string(5000, 'a') + " b", 0},
        {"a b " + std::string(5000, ' ') + "-7", 0x4},
    };
    for (const auto& each : CASES) {
        Sequencer leds(rows);
        leds.send(each.line);
        EXPECT_EQ(leds.nextOutput(), each.shown) << each.line.substr(0, 40);
    }
}

TEST(LedCtrl, LogsWhatItDoesWithACommand) {
    const std::vector<Row> rows = {row("on", 1, LedCtrl::ACTION_ON, 2), row("odd", 1, 9, 2),
                                   row("flash", 1, LedCtrl::ACTION_FLASH, 2)};
    Sequencer leds(rows, 0, {}, static_cast<LedCtrl::AccessMethod>(7));
    LogRecorder log;
    leds.send("on x");
    leds.send("odd x");
    leds.send("nothing x");
    leds.update();
    leds.m_suspended = true;
    leds.update();
    EXPECT_EQ(log.take(),
              (Lines{"DB_FRAMEWORK 7: Found LED command at index 0",
                     "DB_FRAMEWORK 7: Found LED command at index 1",
                     "DB_FRAMEWORK 7: Found previous group action (on x). Stopping action 0",
                     "DB_FRAMEWORK 7: Unknown LED command action: 9",
                     "DB_FRAMEWORK 3: Unknown LED access method: 7",
                     "DB_FRAMEWORK 7: Skipping LED Update!"}));
}

TEST(LedCtrl, WritesEachLedsFileInEveryTickUnlessSuspended) {
    const TempDir dir;
    for (const char* const name : {"old", "low", "both"})
        dir.write(name, "");
    dir.makePipe("pipe");
    const std::string old = dir.path("old"), low = dir.path("low"), both = dir.path("both"),
                      gone = dir.path("gone"), pipe = dir.path("pipe");
    const std::vector<Row> rows = {row("t", 1, LedCtrl::ACTION_ON, 0, 300, true)};
    const std::vector<LedCtrl::FileNameMap> files = {{1, old.c_str()},   {8, gone.c_str()},
                                                     {1, low.c_str()},   {3, both.c_str()},
                                                     {-2, both.c_str()}, {INT32_MIN, pipe.c_str()}};
    LogRecorder log;
    const auto before = support::openDescriptors();
    Sequencer leds(rows, 0, files);
    leds.openFiles();
    EXPECT_EQ(log.take(), Lines{"DB_FRAMEWORK 3: unable to open file " + gone + " "});
    fill(pipe); // nobody reads it: its LED fails in each tick without affecting the others
    leds.setupDefault();
    for (int tick = 0; tick < 6; ++tick) {
        leds.m_suspended = tick == 1 || tick == 2; // the action does not count down meanwhile
        leds.update();
    }
    leds.shutdown();
    const int next = ::open(old.c_str(), O_RDWR | O_CLOEXEC); // gets the first file's number
    leds.update();
    leds.shutdown();
    EXPECT_EQ(::close(next), 0) << "not the service's to close";
    EXPECT_EQ(dir.read("old"), "") << "nor to write to";
    EXPECT_EQ(dir.read("low"), "1110");
    EXPECT_EQ(dir.read("both"), "1110")
        << "in the order of the masks, each through its own descriptor";
    EXPECT_EQ(support::openDescriptors(), before);
}

class LedPipe : public testing::Test {
protected:
    void SetUp() override { ::unlink(PIPE); }
    void TearDown() override { ::unlink(PIPE); }
};

TEST_F(LedPipe, AcceptsAnyBytesAndContinues) {
    const std::vector<Row> rows = {{"a", "b", 1, 1, LedCtrl::ACTION_ON, 0, 0, false},
                                   {"c", "d", 2, 2, LedCtrl::ACTION_ON, 0, 0, false}};
    Sequencer leds(rows);
    LogRecorder log;
    const mode_t mask = ::umask(0);
    leds.setupFifo();
    ::umask(mask);
    struct stat status {};
    EXPECT_EQ(::stat(PIPE, &status), 0);
    EXPECT_EQ(status.st_mode, S_IFIFO | 0666U) << "anybody may send commands";
    leds.testFifo();
    EXPECT_EQ(log.take(), Lines{});
    const std::string endless(200, 'e');
    const struct {
        std::string bytes;
        std::vector<Lines> reads; ///< the lines of each tick's read, until nothing is left
    } CASES[] = {
        {"a b 1\r\n\nc d 2\n", {{"a b 1\r", "c d 2"}}},
        {std::string(76, 'x') + "\na b 1\n", {{std::string(76, 'x'), "a b"}, {" 1"}}},
        {endless, {{endless.substr(0, 80)}, {endless.substr(0, 80)}, {endless.substr(0, 40)}}},
        {std::string("c d\0 2\na b 1\n", 13), {{"c d"}}},
        {std::string("\0\n\xFF\x80\n", 5), {{}}},
        {"\xFF\x80 \x1B[2J\n%s%n %d\n", {{"\xFF\x80 \x1B[2J", "%s%n %d"}}},
        {"\na b 1", {{"a b 1"}}},
    };
    for (const auto& each : CASES) {
        writeToPipe(each.bytes);
        for (const Lines& lines : each.reads) {
            leds.readCmd();
            EXPECT_EQ(commandsIn(log.take()), lines);
        }
        leds.readCmd(); // the writer is gone: no data, but no end of file either
        EXPECT_EQ(log.take(), Lines{});
    }
    EXPECT_EQ(leds.nextOutput(), 3U);
    leds.shutdown();
    const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC); // gets the pipe's number
    leds.shutdown();
    EXPECT_EQ(::close(next), 0) << "not the service's to close";
}

TEST_F(LedPipe, LogsWhatIsWrongWithItsPath) {
    Sequencer leds({});
    LogRecorder log;
    ASSERT_EQ(::mkdir(PIPE, 0700), 0);
    leds.setupFifo(); // a folder can be opened
    leds.testFifo();
    leds.readCmd();
    ::rmdir(PIPE);
    EXPECT_EQ(log.take(), Lines{"DB_FRAMEWORK 3: error open - test fifo: "});
    leds.shutdown();

    ASSERT_EQ(::symlink("/nowhere/at all", PIPE), 0);
    leds.setupFifo();
    leds.testFifo();
    leds.readCmd();
    EXPECT_EQ(log.take(), (Lines{"DB_FRAMEWORK 7: Shutting down LED Control...",
                                 "DB_FRAMEWORK 3: error open: No such file or directory",
                                 "DB_FRAMEWORK 3: error open - test fifo: "}));
    leds.shutdown();
    ::unlink(PIPE);

    // Older bytes in the pipe are not the self-test's text.
    leds.setupFifo();
    writeToPipe("left");
    log.take();
    leds.testFifo();
    EXPECT_EQ(log.take(), Lines{"DB_FRAMEWORK 3: test fifo error"});
    leds.shutdown();
}

TEST_F(LedPipe, RunsByItselfUntilItIsReleased) {
    const TempDir dir;
    dir.write("led", "");
    const std::string path = dir.path("led");
    const LedCtrl::FileNameMap file = {1, path.c_str()};
    const Row commands[] = {row("start", 1, LedCtrl::ACTION_ON, 0, 0, true),
                            row("off", 1, LedCtrl::ACTION_OFF)};
    const auto before = support::openDescriptors();
    auto* const leds = new LedCtrl(commands, 2, &file, 1, LedCtrl::ACCESS_FILES, 1, 0);
    while (sizeOf(path) < 3)
        ::sched_yield();
    EXPECT_EQ(dir.read("led").substr(0, 3), "111") << "the default row";
    writeToPipe("off x\n");
    while (dir.read("led").find('0') == std::string::npos)
        ::sched_yield();
    EXPECT_TRUE(leds->stop().isSuccess());
    dir.write("led", "");
    EXPECT_TRUE(leds->start(String::EMPTY()).isSuccess());
    while (sizeOf(path) < 1)
        ::sched_yield();
    leds->release();
    EXPECT_EQ(support::openDescriptors(), before + 2) << "each start leaves the pipe's writer";

    constexpr int ROUNDS = 300;
    for (int round = 0; round < ROUNDS; ++round)
        (new LedCtrl(commands, 2, &file, 1, LedCtrl::ACCESS_FILES,
                     static_cast<unsigned>(1 + round % 3), 0))
            ->release();
    EXPECT_EQ(support::openDescriptors(), before + 2 + ROUNDS)
        << "one per service, however briefly it ran";
}

TEST_F(LedPipe, EndsItsThreadBeforeAnyMemberIsDestroyed) {
    struct Sink : support::LogRecorder {
        std::atomic<TYThread*> service{nullptr};
        std::atomic<int> owner{0};
        bool isWhole = false;
        void write(const String&, int, const String&) override {
            if (TYThread* const leds = service.exchange(nullptr)) {
                support::waitUntilAsleep(owner); // in the destructor, which waits for this call
                isWhole = dynamic_cast<LedCtrl*>(leds) != nullptr;
            }
        }
    } sink;
    auto* const leds = new LedCtrl(nullptr, 0, nullptr, 0, LedCtrl::ACCESS_NONE, 1, 0);
    leds->m_suspended = true;
    sink.service = leds;
    while (sink.service)
        ::sched_yield();
    sink.owner = ::gettid();
    delete leds;
    EXPECT_TRUE(sink.isWhole);
}

TEST_F(LedPipe, RejectsAShutdownOnItsOwnThreadAndATickOfZero) {
    struct Sink : support::LogRecorder {
        std::atomic<LedCtrl*> service{nullptr};
        void write(const String& category, int level, const String& text) override {
            LedCtrl* const leds = service;
            if (leds && text == "Skipping LED Update!") {
                service = nullptr;
                leds->shutdown();
                leds->release();
            }
            LogRecorder::write(category, level, text);
        }
    } sink;
    auto* const leds = new LedCtrl(nullptr, 0, nullptr, 0, LedCtrl::ACCESS_NONE, 1, 0);
    leds->m_suspended = true;
    sink.service = leds;
    while (sink.service)
        ::sched_yield();
    leds->release();
    const Lines lines = sink.take();
    EXPECT_EQ(std::count(lines.begin(), lines.end(),
                         "DB_FRAMEWORK 3: LED control can't be shut down on its own thread"),
              2);

    for (const unsigned tick : {0U, 0x80000000U}) { // 1000 * the second is 0 in 32 bits
        LedCtrl idle(nullptr, 0, nullptr, 0, LedCtrl::ACCESS_NONE, tick, 0);
        EXPECT_FALSE(idle.isAlive());
        EXPECT_EQ(sink.take(), Lines{"DB_FRAMEWORK 3: invalid LED tick period: " +
                                     std::to_string(tick) + " ms"});
        EXPECT_TRUE(idle.start(String::EMPTY()).isSuccess());
        static_cast<void>(idle.join()); // it ends by itself, as it would tick without a pause
    }
}

TEST(LedCtrl, SurvivesRandomTablesAndLines) {
    std::mt19937 random(20260101);
    const auto any = [&](auto... values) {
        const std::int32_t all[] = {values...};
        return all[random() % (sizeof all / sizeof *all)];
    };
    const char* const WORDS[] = {"a", "b", "", "system"};
    for (int round = 0; round < 1000; ++round) {
        std::vector<Row> rows;
        for (auto i = random() % 12; i > 0; --i)
            rows.push_back(
                {WORDS[random() % 4], WORDS[random() % 4], any(0, 1, -1, INT32_MIN),
                 random() % 4 ? static_cast<std::uint32_t>(random() & random() & random())
                              : static_cast<std::uint32_t>(any(0, -1)),
                 any(0, 1, 2, 3, 4, 5, 6, 7, 8, -1), any(0, 1, 1, 2, -1, INT32_MAX),
                 any(0, 0, 100, 150, 3000, -1, INT32_MAX, INT32_MIN), random() % 3 == 0});
        const auto tickMs = static_cast<unsigned>(any(1, 100, 0, INT32_MAX));
        Sequencer leds(rows, static_cast<unsigned>(random()), {}, LedCtrl::ACCESS_NONE, tickMs);
        leds.setupDefault();
        std::uint32_t possible = 0;
        for (const Row& each : rows)
            possible |= each.ledMask;
        for (int tick = 0; tick < 1000; ++tick) {
            if (random() % 8 == 0)
                leds.send(std::string(WORDS[random() % 4]) + " " + WORDS[random() % 4] + " " +
                          std::to_string(any(0, 1, -1, INT32_MIN)));
            ASSERT_EQ(leds.nextOutput() & ~possible, 0U) << round << " " << tick;
        }
    }
}
