#include "LedCtrl.h"

#include <algorithm>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "services/led/Sequencer.h"
#include "support/Descriptors.h"

using namespace sequencer;

namespace {

void fill(const std::string& path) {
    const int pipe = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    while (::write(pipe, std::string(4096, ' ').data(), 4096) > 0) {
    }
    ::close(pipe);
}

} // namespace

TEST(LedCtrl, ShowsWhatEachKindOfCommandShows) {
    const struct {
        const char* what;
        std::vector<Row> rows;
        /// Per tick the index of the row that runs ('.': none) and the LEDs that are lit then.
        /// Blinking starts with an unlit tick.
        std::string ticks;
    } CASES[] = {
        {"rounded up to whole ticks", {row(ON, 1, 0, 101)}, "0:1 .:1 .:0 .:0"},
        {"time wraps in 32 bits", {row(ON, 1, 0, 4294968), row(ON, 2, 0, 4294868)}, "0:1 1:0 .:0"},
        {"timed over static", {row(ON, 3), row(BLINK, 2, 0, 300)}, "0:3 1:3 .:1 .:3 .:3 .:3"},
        {"roll up", {row(UP, 0xB)}, "0:2 .:8 .:1 .:2 .:8 .:1"},
        {"roll down", {row(DOWN, 0xB)}, "0:8 .:2 .:1 .:8 .:2 .:1"},
        {"timed roll", {row(DOWN, 6, 0, 300)}, "0:4 .:2 .:4 .:0 .:0"},
        {"rolls over an empty mask", {row(UP, 0), row(DOWN, 0, 0, 100)}, "0:0 1:0 .:0"},
        {"roll-stop", {row(ON, 1), row(UP, 3), row(STOP, 3)}, "0:1 1:2 .:1 2:1 .:1"},
        {"roll-stop ignores a roll of another word",
         {row(DOWN, 0xE, 0, 0, false, "other"), row(UP, 0xE), row(STOP, 0xE)},
         "0:8 1:6 2:2 .:8"},
        {"roll-stop ignores other actions and ends one roll at a time, the oldest first",
         {row(UP, 0xE), row(DOWN, 0xE), row(ON, 0xE, 0, 300), row(STOP, 0xE)},
         "2:E 0:E 3:E 0:2 1:C 3:4 3:0"},
        {"a roll that was stopped leaves its group",
         {row(UP, 0xE, 2), row(STOP, 0xE, 2), row(DOWN, 0xE), row(ON, 1, 2)},
         "0:2 1:0 2:8 3:5"},
        {"stopped by another group",
         {row(UP, 6, 2, 900), row(STOP, 6), row(ON, 1, 2)},
         "0:2 1:0 2:1"},
        {"roll-stop with other LEDs", {row(UP, 3), row(STOP, 1)}, "0:2 .:1 1:2 .:1"},
        {"rows end their group's last row", {row(ON, 1, 2), row(BLINK, 2, 2)}, "0:1 1:2 .:0 0:1"},
        {"including a timed row and a roll",
         {row(ON, 7), row(ON, 9, 2, 900), row(UP, 0x26, 2), row(ON, 0x10, 2)},
         "0:7 1:F 2:3 .:5 3:17"},
        {"but only what that row set",
         {row(ON, 1, 2), row(BLINK, 1), row(BLINK, 2, 2), row(ON, 2), row(ON, 4, 2)},
         "0:1 1:1 2:0 3:3 4:6 .:7"},
        {"a row that is sent again starts over", {row(ON, 1, 2, 200)}, "0:1 0:1 .:1 .:0"},
        {"and nothing in group 0 or below",
         {row(ON, 1), row(ON, 2), row(ON, 4, -1), row(ON, 8, -1)},
         "0:1 1:3 2:7 3:F"},
        {"off ends its group's last row, and only once",
         {row(ON, 1, 2), row(OFF, 2, 2), row(ON, 1), row(BLINK, 4, 2), row(BLINK, 4),
          row(ON, 8, 2)},
         "0:1 1:0 2:1 3:5 1:1 4:5 5:9 .:D"},
        {"off ends what is lit and what blinks",
         {row(ON, 1), row(BLINK, 2), row(OFF, 3)},
         "0:1 1:3 .:1 2:0 .:0 .:0"},
        {"ended rows leave their group", {row(ON, 1, 2, 100), row(ON, 2, 2)}, "0:1 .:0 1:2"},
        {"even if their time was negative",
         {row(ON, 1, 2, -4294967), row(ON, 1), row(ON, 2, 2)},
         "0:1 .:0 1:1 2:3"},
        {"a flash under an action is not shown later",
         {row(ON, 1, 0, 200), row(FLASH, 1)},
         "0:1 1:1 .:0"},
        {"an ending action frees LEDs that another owns too",
         {row(ON, 1), row(BLINK, 1, 0, 100), row(BLINK, 1, 0, 900)},
         "0:1 1:1 2:1 .:1 .:1"},
        {"a negative time wraps and is not stopped by its group",
         {row(ON, 1, 2, -500), row(BLINK, 4, 0, -500), row(ON, 6, 2)},
         "0:1 1:5 2:3"},
        {"defaults keep static states and end actions and groups",
         {row(ON, 3, 2), row(BLINK, 0xA, 0, 900), row(ON, 4, 0, 0, true), row(DEFAULTS, 0),
          row(ON, 0x10, 2)},
         "0:3 1:B .:1 3:7 4:17"},
        {"default rows stop their group's last row, and neither group nor off stops a flash",
         {row(DEFAULTS, 0), row(ON, 8, 2, 0, true), row(FLASH, 1, 2, 0, true),
          row(FLASH, 4, 2, 0, true), row(ON, 2, 2, 0, true), row(OFF, 5, 0, 0, true)},
         "0:7 .:2"},
        {"a default row whose action is the defaults",
         {row(DEFAULTS, 0, 0, 0, true), row(FLASH, 1, 0, 0, true)},
         ".:0 0:1 .:0"},
        {"unknown kinds end their group",
         {row(ON, 1, 2), row(8, 7, 2), row(ON, 2, 2)},
         "0:1 1:0 2:2"},
    };
    for (const auto& each : CASES) {
        Sequencer leds(each.rows);
        for (int tick = 0; tick < 66; ++tick) // until the blink pattern is loaded again
            leds.nextOutput();
        std::istringstream ticks(each.ticks);
        for (std::string tick; ticks >> tick;) {
            if (tick[0] != '.')
                leds.executeCmd(each.rows[static_cast<std::size_t>(tick[0] - '0')]);
            EXPECT_EQ(leds.nextOutput(), std::stoul(tick.substr(2), nullptr, 16))
                << each.what << " (" << tick << " of " << each.ticks << ")";
        }
    }
}

TEST(LedCtrl, ClampsTheNumberOfALineTo32Bits) {
    const std::pair<std::int32_t, std::string> CASES[] = {
        {0, "a b 0x7"},
        {-10, "a b " + std::string(5000, ' ') + "-10x"},
        {INT32_MAX, "a b 2147483648"},
        {INT32_MAX, "a b 99999999999999999999"},
        {INT32_MIN, "a b -2147483649"},
        {INT32_MIN, "a b -99999999999999999999"},
    };
    for (const auto& [number, line] : CASES) {
        const std::vector<Row> rows = {{"a", "b", number, 1, FLASH, 0, 0, false}};
        Sequencer leds(rows);
        leds.send(line);
        EXPECT_EQ(leds.nextOutput(), 1U) << line;
    }
}

TEST(LedCtrl, LogsWhatItDoesWithACommand) {
    const std::vector<Row> rows = {row(ON, 1, 2, 900), row(9, 1, 2, 0, false, "odd"), row(FLASH, 1),
                                   row(DEFAULTS, 0)};
    Sequencer leds(rows, {}, static_cast<LedCtrl::AccessMethod>(7));
    LogRecorder log;
    for (const char* const line : {"w x", "odd x", "odd x", "nothing x"})
        leds.send(line);
    leds.update();
    leds.m_suspended = true;
    leds.update();
    Sequencer({}, {}, LedCtrl::ACCESS_NONE).update(); // logs nothing
    LedCtrl::ActionDesc odd{&rows[1], 1, 1, false};
    EXPECT_EQ(leds.handleAction(odd), 0U);
    leds.executeCmd(rows[2]);
    leds.executeCmd(rows[3]);
    leds.stopAction(rows[2]);
    leds.stopAction(rows[1]);
    EXPECT_EQ(leds.nextOutput(), 0U) << "the flash was stopped";
    EXPECT_EQ(log.take(),
              (Lines{"DB_FRAMEWORK 7: Found LED command at index 0",
                     "DB_FRAMEWORK 7: Found LED command at index 1",
                     "DB_FRAMEWORK 7: Found previous group action (w x). Stopping action 0",
                     "DB_FRAMEWORK 7: Unknown LED command action: 9",
                     "DB_FRAMEWORK 7: Found LED command at index 1",
                     "DB_FRAMEWORK 7: Unknown LED command action: 9",
                     "DB_FRAMEWORK 3: Unknown LED access method: 7",
                     "DB_FRAMEWORK 7: Skipping LED Update!",
                     "DB_FRAMEWORK 7: Unhandled pending action: 9",
                     "DB_FRAMEWORK 7: Unhandled LED action when stopping: 9"}));
}

TEST(LedCtrl, WritesEachLedsFileInEveryTickUnlessSuspended) {
    const TempDir dir;
    for (const char* const name : {"old", "low", "both"})
        dir.write(name, "");
    dir.makePipe("pipe");
    const std::string old = dir.path("old"), low = dir.path("low"), both = dir.path("both"),
                      pipe = dir.path("pipe");
    const std::vector<Row> rows = {row(ON, 1, 0, 300, true)};
    const std::vector<LedCtrl::FileNameMap> files = {{1, old.c_str()},
                                                     {1, low.c_str()},
                                                     {3, both.c_str()},
                                                     {-2, both.c_str()},
                                                     {INT32_MIN, pipe.c_str()}};
    const auto before = support::openDescriptors();
    Sequencer leds(rows, files);
    leds.openFiles();
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

TEST(LedCtrl, RejectsATickThatIsZeroInMicroseconds) {
    LogRecorder log;
    for (const unsigned tick : {0U, 0x80000000U}) { // both, times 1000, are 0 in 32 bits
        LedCtrl idle(nullptr, 0, nullptr, 0, LedCtrl::ACCESS_NONE, tick, 0);
        EXPECT_FALSE(idle.isAlive());
        EXPECT_EQ(log.take(), Lines{"DB_FRAMEWORK 3: invalid LED tick period: " +
                                    std::to_string(tick) + " ms"});
        EXPECT_FALSE(idle.runThread().isSuccess()) << "would tick without a pause";
    }
}
