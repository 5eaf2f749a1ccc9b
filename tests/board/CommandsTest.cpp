#include <algorithm>
#include <csignal>
#include <string>

#include <nlohmann/json.hpp>

#include "OnBoard.h"
#include "support/Boardctl.h"
#include "support/Program.h"

using namespace onboard;
using nlohmann::json;
using support::Outcome;
using support::Program;

namespace {

constexpr char EEPROM[] = "/sys/bus/i2c/devices/1-0050/eeprom";

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

Outcome call(std::vector<std::string> words) {
    words.insert(words.begin(), {"--board", PROFILE});
    return support::boardctl(words);
}

/// The edited EEPROM begins with `image`; the rest of it is erased.
void expectHeld(const std::string& image) {
    const std::string held = eepromOutside();
    EXPECT_EQ(held.substr(0, image.size()), image);
    EXPECT_EQ(held.find_first_not_of('\xFF', image.size()), std::string::npos);
}

} // namespace

TEST(Boot3Commands, EditTheDescriptorInPlace) {
    ASSERT_EQ(write(EEPROM, std::string(512, '\xFF')), "512");
    const std::string product = {'\0', '\x2D', '\0', '\x08', '\x12', '\x34', '\xAB', '\xCD'};
    const std::string terminator = {'\0', '\0', '\0', '\4'};
    const Outcome add = call({"bd", "add", "ProductID=hex:1234abcd", "-y"});
    EXPECT_EQ(add.status, 0) << add.err;
    expectHeld(product + terminator);
    const Outcome set = call({"bd", "set", "ProductID=hex:12345678", "-y"});
    EXPECT_EQ(set.status, 0) << set.err;
    const Outcome unchanged = call({"bd", "set", "ProductID=hex:12345678", "-y"});
    EXPECT_EQ(unchanged.status, 0) << unchanged.err;
    EXPECT_EQ(call({"bd", "get", "ProductID"}).out, "12345678\n");
    EXPECT_EQ(call({"bd", "check"}).status, 0);
    const Outcome full = call({"bd", "add", "0x1234=hex:" + std::string(1200, 'a'), "-y"});
    EXPECT_EQ(full.status, 1);
    EXPECT_TRUE(has(full.err, "DEV SIZE=512")) << full.err;
    expectHeld(product.substr(0, 4) + "\x12\x34\x56\x78" + terminator);
}

TEST(Boot3Commands, TakeTheDescriptorsDeviceAsAnImageFileToo) {
    ASSERT_EQ(write(EEPROM, std::string(512, '\xFF')), "512");
    const Outcome add = support::boardctl({"bd", "add", "-i", EEPROM, "0x1234=u8:7", "-y"});
    EXPECT_EQ(add.status, 0) << add.err;
    expectHeld({'\x12', '\x34', '\0', '\x06', '\7', '\0', '\0', '\0', '\0', '\4'});
    const Unbound away("i2c/drivers/at24", "1-0050");
    const Outcome gone = call({"bd", "set", "0x1234=u8:8", "-y"});
    EXPECT_EQ(gone.status, 1);
    EXPECT_TRUE(has(gone.err, "No such file or directory")) << gone.err;
}

TEST(Boot3Commands, ReportTheWholeBoard) {
    set(SENSOR, "temperature", "31500");
    EXPECT_EQ(call({"fan", "high"}).out, "fan: high\n");
    EXPECT_EQ(call({"led", "alarm", "2"}).out, "alarm: 2\n");
    const Outcome outcome = call({"info", "--format", "json"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const json info = json::parse(outcome.out, nullptr, false);
    ASSERT_FALSE(info.is_discarded()) << outcome.out;
    EXPECT_EQ(info["fans"][0]["speed"], "high") << outcome.out;
    EXPECT_EQ(info["temperatures"][0]["celsius"], 31.5) << outcome.out;
    EXPECT_EQ(info["leds"][0]["state"], 2) << outcome.out;
    EXPECT_EQ(call({"led", "alarm", "1"}).out, "alarm: 1\n");
    EXPECT_EQ(call({"led", "alarm", "bi", "on", "--for", "0"}).out, "alarm: 1\n");
    EXPECT_EQ(call({"led", "alarm", "blink", "2", "2"}).out, "alarm: 1\n");
    EXPECT_EQ(call({"led", "alarm", "0"}).status, 0);
}

TEST(Boot3Commands, SayWhichDeviceIsGone) {
    const Unbound sensor("i2c/drivers/lm75", "1-0048");
    const Unbound leds("i2c/drivers/leds-pca955x", "1-0060");
    const Outcome temp = call({"temp"});
    EXPECT_EQ(temp.status, 1);
    EXPECT_TRUE(
        has(temp.err, "no monitor is named 'tmp105' (expected one; there are: 'lm75' at hwmon"))
        << temp.err;
    const Outcome led = call({"led", "alarm"});
    EXPECT_EQ(led.status, 1);
    EXPECT_TRUE(has(led.err, "there is no LED 'pca955x:alarm' (there are: 'line', 'status')"))
        << led.err;
    const Outcome info = call({"info"});
    EXPECT_EQ(info.status, 1);
    EXPECT_TRUE(has(info.err, "tmp105")) << info.err;
    EXPECT_TRUE(has(info.out, "fan")) << info.out;
}

TEST(Boot3Commands, HostTheBoardWithItsSequencerAndButton) {
    Program bridge({BOARDCTL, "--board", PROFILE, "button", "bridge", "/dev/input/event0"});
    ASSERT_TRUE(bridge.waitForOutput("key 148"));
    Program run({BOARDCTL, "--board", PROFILE, "run"});
    ASSERT_TRUE(run.waitForOutput("ready\n"));
    EXPECT_EQ(support::boardctl({"leds", "send", "system", "ready"}).status, 0);
    ASSERT_TRUE(run.waitForOutput("system ready"));
    EXPECT_TRUE(until([] { return get(LINES, STATUS_LINE) == "true"; }));
    set(LINES, BUTTON_LINE, "true");
    ASSERT_TRUE(run.waitForOutput("button pressed"));
    set(LINES, BUTTON_LINE, "false");
    ASSERT_TRUE(run.waitForOutput("button released, held "));
    {
        const Unbound away("i2c/drivers/lm75", "1-0048");
        EXPECT_EQ(call({"temp"}).status, 1);
    }
    run.signal(SIGTERM);
    const Outcome outcome = run.finish();
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    bridge.signal(SIGTERM);
    EXPECT_EQ(bridge.finish().status, 0);
    EXPECT_EQ(write(locate("led:status"), "0"), "1");
}
