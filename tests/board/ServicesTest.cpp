#include <csignal>
#include <string>

#include <unistd.h>

#include "LedCtrl.h"
#include "OnBoard.h"
#include "button/InputKey.h"
#include "support/TempDir.h"

using namespace onboard;
using support::Program;
using support::TempDir;

namespace {

constexpr char KEYS[] = "/dev/input/event0";
constexpr unsigned KEY = 148;

/// True once `isOn` has been true and then false.
template <class Condition>
bool blinks(Condition isOn) {
    return until(isOn) && until([&] { return !isOn(); });
}

/// The board's button, and the key that reports it.
class Button : public testing::Test {
protected:
    void TearDown() override { set(BUTTON_LINE, "false"); }

    /// Moves the button from outside the board and returns once the kernel has reported it.
    void move(bool down) {
        set(BUTTON_LINE, down ? "true" : "false");
        ASSERT_TRUE(until([&] {
            const auto changes = key.events().read();
            return !changes.empty() && changes.back() == down;
        }));
    }

    board::InputKey key{KEYS, KEY};
    Program bridge{boardctl({"button", "bridge", KEYS})};
};

} // namespace

TEST_F(Button, AndLedsAreServedByAHostedBoard) {
    ASSERT_TRUE(bridge.waitForOutput("key 148"));
    Program run(boardctl({"run"}));
    ASSERT_TRUE(run.waitForOutput("ready\n"));
    EXPECT_TRUE(blinks(isStatusLit));
    expectOutput(call({"leds", "send", "system", "ready"}), "");
    ASSERT_TRUE(run.waitForOutput("system ready"));
    EXPECT_TRUE(until(isStatusLit));
    for (int i = 0; i < 50; ++i)
        EXPECT_TRUE(isStatusLit()) << "is steady";
    move(true);
    ASSERT_TRUE(run.waitForOutput("button pressed"));
    move(false);
    ASSERT_TRUE(run.waitForOutput("button released, held "));
    run.signal(SIGTERM);
    const support::Outcome outcome = run.finish();
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    bridge.signal(SIGTERM);
    EXPECT_EQ(bridge.finish().status, 0);
}

TEST_F(Button, PressedOftenWhileNobodyWatchesArrivesInOrder) {
    ASSERT_TRUE(bridge.waitForOutput("key 148"));
    for (int i = 0; i < 50; ++i) { // more than the kernel buffers
        move(true);
        move(false);
    }
    move(true);
    const TempDir dir;
    dir.write("watch", "");
    const Program watch(boardctl({"button", "watch", "--format", "json"}), dir.path("watch"));
    const auto isDown = [&] {
        const std::string text = dir.read("watch");
        return text.rfind("button-pressed") + 1 > text.rfind("button-released") + 1; // 0: absent
    };
    EXPECT_TRUE(until(isDown));
    move(false);
    EXPECT_TRUE(until([&] { return !isDown(); }));
}

TEST_F(Button, BridgeExplainsWhatIsWrongWithItsDevice) {
    ASSERT_TRUE(bridge.waitForOutput("key 148"));
    expectFault(call({"button", "bridge", KEYS, "--code", "30"}),
                "has no key 30 (expected one of the codes 148)");
    expectFault(call({"button", "bridge", KEYS}), "another program writes this button's messages");
    whileUnbound("platform/drivers/gpio-keys", "button",
                 [&] { expectFault(bridge.finish(), "the device is gone"); });
    EXPECT_TRUE(until([] { return ::access(KEYS, R_OK) == 0; }));
}

TEST(LedSequencer, ContinuesWithoutALedWhoseDriverIsAway) {
    const std::string status = locate(STATUS_LED);
    const std::string alarm = locate(ALARM_LED);
    const LedCtrl::CmdDef table[] = {{"all", "blink", 0, 3, LedCtrl::ACTION_BLINK, 1, 0, true}};
    const LedCtrl::FileNameMap files[] = {{1, alarm.c_str()}, {2, status.c_str()}};
    auto* const leds = new LedCtrl(table, 1, files, 2, LedCtrl::ACCESS_FILES, 10, 0x0F0F0F0F);
    EXPECT_TRUE(blinks([] { return get(ALARM_LIGHT) != "\"off\""; }));
    whileUnbound("i2c/drivers/leds-pca955x", "1-0060", [] { EXPECT_TRUE(blinks(isStatusLit)); });
    // The device is back, but the service still holds the file of the old one.
    EXPECT_TRUE(blinks(isStatusLit));
    EXPECT_EQ(read(ALARM_LED), "0");
    leds->release();
}
