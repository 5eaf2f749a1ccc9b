#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

#include "CpuLoad.h"
#include "LedCtrl.h"
#include "OnBoard.h"
#include "button/InputKey.h"
#include "support/Boardctl.h"
#include "support/Program.h"
#include "support/TempDir.h"

using namespace onboard;
using support::Program;
using support::TempDir;

namespace {

constexpr char KEYS[] = "/dev/input/event0";
constexpr unsigned KEY = 148;

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

bool isLit(const char* line) {
    return get(LINES, line) == "true";
}

std::size_t countOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

/// The button, its pipe in a temporary folder, and the key that reports it.
class Button : public testing::Test {
protected:
    Button() {
        dir.write("board.toml", "[button]\ndevice = 'button'\n");
        dir.write("watch", "");
    }
    ~Button() override {
        try {
            set(LINES, BUTTON_LINE, "false");
        } catch (const std::exception& error) {
            ADD_FAILURE() << error.what();
        }
    }

    std::vector<std::string> words(std::vector<std::string> more) const {
        more.insert(more.begin(), {BOARDCTL, "--board", dir.path("board.toml"), "button"});
        return more;
    }

    /// Moves the button from outside the board and returns once the kernel has reported it.
    void move(bool down) {
        set(LINES, BUTTON_LINE, down ? "true" : "false");
        ASSERT_TRUE(until([&] {
            const auto changes = key.events().read();
            return !changes.empty() && changes.back() == down;
        }));
    }

    /// The reports of `event` so far from a program that watches the button.
    std::size_t told(const char* event) const { return countOf(dir.read("watch"), event); }

    const TempDir dir;
    board::InputKey key{KEYS, KEY};
};

/// Keeps one processor busy while it lives.
class Spinner {
public:
    Spinner()
        : m_thread([this] {
              while (!m_end)
                  ;
          }) {}
    ~Spinner() {
        m_end = true;
        m_thread.join();
    }
    Spinner(const Spinner&) = delete;
    Spinner& operator=(const Spinner&) = delete;

private:
    std::atomic<bool> m_end{false};
    std::thread m_thread;
};

/// The load over a period in which all processors together were idle for a second.
unsigned short loadOverAPeriod() {
    CpuLoad meter;
    EXPECT_TRUE(meter.setup().isSuccess());
    unsigned long busy = 0;
    unsigned long start = 0;
    EXPECT_TRUE(meter.getCurrentLoad(busy, start).isSuccess());
    EXPECT_TRUE(until([&] {
        unsigned long idle = 0;
        ::usleep(10000); // to be idle
        return !meter.getCurrentLoad(busy, idle).isSuccess() || idle - start >= 100;
    }));
    unsigned short last = 999;
    unsigned short others = 999;
    EXPECT_TRUE(meter.measure(last, others, others).isSuccess());
    return last;
}

} // namespace

TEST(LedSequencer, DrivesLedsByLinesOfAnotherProcess) {
    const std::string status = locate("led:status");
    const std::string line = locate("led:line");
    const LedCtrl::CmdDef table[] = {{"system", "boot", 0, 1, LedCtrl::ACTION_BLINK, 1, 0, true},
                                     {"system", "ready", 0, 1, LedCtrl::ACTION_ON, 1, 0, false},
                                     {"system", "off", 0, 3, LedCtrl::ACTION_OFF, 1, 0, false},
                                     {"line", "call", 7, 2, LedCtrl::ACTION_ON, 2, 0, false}};
    const LedCtrl::FileNameMap files[] = {{1, status.c_str()}, {2, line.c_str()}};
    auto* const leds = new LedCtrl(table, 4, files, 2, LedCtrl::ACCESS_FILES, 10, 0x0F0F0F0F);
    const auto send = [](const std::string& words) {
        EXPECT_EQ(Program({"/bin/sh", "-c", "echo " + words + " >/tmp/evt.fifo"}).finish().status,
                  0);
    };
    EXPECT_TRUE(until([] { return isLit(STATUS_LINE); })) << "blinks";
    EXPECT_TRUE(until([] { return !isLit(STATUS_LINE); })) << "blinks";
    send("system ready");
    send("line call 7");
    EXPECT_TRUE(until([] { return isLit(SECOND_LINE); }));
    EXPECT_TRUE(until([] { return isLit(STATUS_LINE); })); // the line before was handled
    for (int i = 0; i < 50; ++i)
        EXPECT_TRUE(isLit(STATUS_LINE)) << "is steady";
    EXPECT_EQ(read(status), "1");
    send("system off");
    EXPECT_TRUE(until([] { return !isLit(STATUS_LINE) && !isLit(SECOND_LINE); }));
    leds->release();
}

TEST(LedSequencer, GoesOnWithoutALedWhoseDriverIsAway) {
    const std::string status = locate("led:status");
    const std::string alarm = locate("led:pca955x:alarm");
    const LedCtrl::CmdDef table[] = {{"all", "blink", 0, 3, LedCtrl::ACTION_BLINK, 1, 0, true}};
    const LedCtrl::FileNameMap files[] = {{1, alarm.c_str()}, {2, status.c_str()}};
    auto* const leds = new LedCtrl(table, 1, files, 2, LedCtrl::ACCESS_FILES, 10, 0x0F0F0F0F);
    const auto blinks = [](auto isOn) { return until(isOn) && until([&] { return !isOn(); }); };
    const auto isAlarmOn = [] { return get(LED_CHIP, "led0") != "\"off\""; };
    EXPECT_TRUE(blinks(isAlarmOn));
    {
        const Unbound away("i2c/drivers/leds-pca955x", "1-0060");
        EXPECT_TRUE(blinks([] { return isLit(STATUS_LINE); }));
    }
    // The device is back, but the service still holds the file of the old one.
    EXPECT_TRUE(blinks([] { return isLit(STATUS_LINE); }));
    EXPECT_EQ(read(locate("led:pca955x:alarm")), "0");
    leds->release();
    EXPECT_EQ(write(status, "0"), "1");
}

TEST_F(Button, ReachesTheMonitorThroughTheBridgeWithTheTimeItWasHeld) {
    using Clock = std::chrono::steady_clock;
    Program bridge(words({"bridge", KEYS}));
    ASSERT_TRUE(bridge.waitForOutput("key 148"));
    Program watch(words({"watch", "--format", "json"}), dir.path("watch"));
    move(true);
    ASSERT_TRUE(watch.waitForOutput("button-pressed"));
    const auto seen = Clock::now();
    ASSERT_TRUE(until([&] { return Clock::now() - seen > std::chrono::milliseconds(300); }));
    const std::chrono::duration<double> atLeast = Clock::now() - seen;
    move(false);
    ASSERT_TRUE(watch.waitForOutput("button-released"));
    for (int i = 0; i < 5; ++i) {
        move(true);
        move(false);
    }
    EXPECT_TRUE(until([&] { return told("button-released") == 6; }));
    EXPECT_EQ(told("button-pressed"), 6U);
    bridge.signal(SIGTERM);
    EXPECT_EQ(bridge.finish().status, 0);
    watch.signalUntilEnded(SIGTERM);
    const std::string out = watch.finish().out;
    const std::string held = "\"held_seconds\":";
    ASSERT_TRUE(has(out, held)) << out;
    EXPECT_GE(std::stod(out.substr(out.find(held) + held.size())), atLeast.count()) << out;
}

TEST_F(Button, PressedOftenWhileNobodyWatchesArrivesInOrder) {
    Program bridge(words({"bridge", KEYS}));
    ASSERT_TRUE(bridge.waitForOutput("key 148"));
    for (int i = 0; i < 50; ++i) { // more than the kernel buffers
        move(true);
        move(false);
    }
    move(true);
    Program watch(words({"watch", "--format", "json"}), dir.path("watch"));
    EXPECT_TRUE(until([&] { return told("button-pressed") > told("button-released"); }));
    move(false);
    EXPECT_TRUE(until([&] { return told("button-released") == told("button-pressed"); }));
    EXPECT_GE(told("button-pressed"), 1U);
}

TEST_F(Button, BridgeSaysWhatIsWrongWithItsDevice) {
    const support::Outcome other = Program(words({"bridge", KEYS, "--code", "30"})).finish();
    EXPECT_EQ(other.status, 1);
    EXPECT_TRUE(has(other.err, "has no key 30 (expected one of the codes 148)")) << other.err;
    Program bridge(words({"bridge", KEYS}));
    ASSERT_TRUE(bridge.waitForOutput("key 148"));
    const support::Outcome second = Program(words({"bridge", KEYS})).finish();
    EXPECT_EQ(second.status, 1);
    EXPECT_TRUE(has(second.err, "another program writes this button's messages")) << second.err;
    {
        const Unbound away("platform/drivers/gpio-keys", "button");
        const support::Outcome gone = bridge.finish();
        EXPECT_EQ(gone.status, 1);
        EXPECT_TRUE(has(gone.err, "the device is gone")) << gone.err;
    }
    EXPECT_TRUE(until([] { return ::access(KEYS, R_OK) == 0; }));
}

TEST(CpuLoad, IsHigherWhenAProcessorIsBusy) {
    const unsigned short idle = loadOverAPeriod();
    unsigned short busy = 0;
    {
        const Spinner spinner; // on one of two processors
        busy = loadOverAPeriod();
    }
    EXPECT_LT(idle, 25);
    EXPECT_GE(busy, 35);
    EXPECT_LE(busy, 75);
}
