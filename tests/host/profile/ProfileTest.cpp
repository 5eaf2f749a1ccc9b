#include "profile/Profile.h"

#include <algorithm>
#include <tuple>

#include <gtest/gtest.h>

#include "support/Failure.h"
#include "support/TempDir.h"

using board::Profile;
using support::TempDir;

namespace {

/// The message of loading `text`, without the path; "" if it loads.
std::string complaintOf(const TempDir& dir, const std::string& text) {
    dir.write("board.toml", text);
    const std::string what = support::failureOf([&] { Profile::load(dir.path("board.toml")); });
    if (what == "no failure")
        return "";
    EXPECT_EQ(what.rfind(dir.path("board.toml:"), 0), 0U) << what;
    EXPECT_EQ(std::count(what.begin(), what.end(), '\n'), 0) << what;
    return what.substr(dir.path("board.toml:").size());
}

} // namespace

TEST(Profile, ReadsDefaultsDeviceClassesActionsAndPlainNumbers) {
    const TempDir dir;
    std::string text = "[[fan]]\nname='f'\ndevice='hwmon:tmp105/pwm1'\nmaximum=4294967295\n"
                       "[[led]]\nname='a'\ndevice='a'\n[[led]]\nname='b'\ndevice='b'\non=9999\n"
                       "[descriptor]\ndevice='/abs'\nread_chunk=1\nsize=65536\n"
                       "[leds]\naccess=7\ntick_ms=4294967\n"
                       "blink_pattern=0xF000000F\n";
    for (const std::string action : {"'on'", "'off'", "'blink'", "'flash'", "'roll-up'",
                                     "'roll-down'", "'roll-stop'", "'defaults'", "-2147483648"})
        text += "[[leds.command]]\nword1='a'\nword2='b'\nmask=0xFFFFFFFF\naction=" + action + "\n";
    dir.write("board.toml", text + "number=-1\ngroup=3\ntime_ms=-5\n");
    const Profile profile = Profile::load(dir.path("board.toml"));
    EXPECT_EQ(profile.fans[0].device.path, "hwmon:tmp105/pwm1");
    EXPECT_EQ(profile.fans[0].maximum, 4294967295U);
    EXPECT_EQ(std::tie(profile.fans[0].manual, profile.fans[0].automatic), std::tuple(1U, 2U));
    EXPECT_EQ(profile.fans[0].onExit, board::FanProfile::OnExit::RESTORE);
    EXPECT_EQ(std::tie(profile.leds[0].on, profile.leds[1].on), std::tuple(1U, 9999U));
    EXPECT_FALSE(profile.simulated);
    EXPECT_EQ(profile.watch.period, std::chrono::seconds(5));
    EXPECT_FALSE(profile.watch.onAlarm || profile.watch.onClear);
    EXPECT_EQ(profile.descriptor->device.path, "/abs");
    EXPECT_EQ(profile.descriptor->readChunk, 1U);
    EXPECT_EQ(profile.descriptor->size, 65536U);
    EXPECT_EQ(profile.ledService->access, 7);
    EXPECT_EQ(profile.ledService->tickMs, 4294967U);
    EXPECT_EQ(profile.ledService->blinkPattern, 0xF000000FU);
    const auto& commands = profile.ledService->commands;
    for (int action = 0; action < 8; ++action)
        EXPECT_EQ(commands.at(static_cast<std::size_t>(action)).action, action);
    const auto& last = commands.back();
    EXPECT_EQ(last.mask, 0xFFFFFFFFU);
    EXPECT_EQ(last.action, INT32_MIN);
    EXPECT_EQ(std::tie(last.number, last.group, last.timeMs), std::tuple(-1, 3, -5));
    EXPECT_FALSE(last.isDefault);
    EXPECT_EQ(std::tie(commands[0].number, commands[0].group, commands[0].timeMs),
              std::tuple(0, 0, 0));

    dir.write("board.toml", "simulated=true\n[descriptor]\ndevice='d'\n[voip]\n[leds]\n"
                            "[[leds.file]]\nmask=1\npath='p'\non=255\n[[fan]]\nname='f'\n"
                            "device='d'\nmaximum=1\nmanual=0\nautomatic=5\non_exit='full'\n"
                            "tach='led:x'\n[[thermal]]\nname='t'\ndevice='d'\nmaximum=1\n"
                            "hysteresis=0\n[watch]\nperiod_s=0.25\non_alarm=' a  b '\n"
                            "on_clear='a b -7'\n");
    const Profile plain = Profile::load(dir.path("board.toml"));
    EXPECT_EQ(plain.descriptor->readChunk, 128U);
    EXPECT_EQ(plain.descriptor->size, 512U);
    EXPECT_FALSE(plain.voip->borderController);
    EXPECT_EQ(plain.voip->defaultSipLegs, 0U);
    EXPECT_EQ(plain.ledService->tickMs, 100U);
    EXPECT_EQ(plain.ledService->files[0].on, 255U);
    EXPECT_EQ(std::tie(plain.fans[0].manual, plain.fans[0].automatic), std::tuple(0U, 5U));
    EXPECT_EQ(plain.fans[0].onExit, board::FanProfile::OnExit::FULL);
    EXPECT_EQ(plain.fans[0].tach->path, "led:x");
    EXPECT_TRUE(plain.simulated);
    EXPECT_EQ(plain.thermals[0].hysteresis, 0U);
    EXPECT_EQ(plain.watch.period, std::chrono::milliseconds(250));
    const auto& onAlarm = *plain.watch.onAlarm;
    EXPECT_EQ(std::tie(onAlarm.word1, onAlarm.word2), std::tuple("a", "b"));
    EXPECT_FALSE(onAlarm.number);
    EXPECT_EQ(plain.watch.onClear->number, -7);
}

TEST(Profile, SaysFileLineKeyAndWhatWasExpected) {
    const std::string fan = "[[fan]]\nname='f'\ndevice='d'\n";
    const std::string noLine =
        " is not a line for the LEDs (expected two words and, if the row has "
        "one, a number)";
    const struct {
        std::string text;
        std::string complaint;
    } CASES[] = {
        {"", ""},
        {fan + "maximum=5000000000\n",
         "4: fan[0].maximum: 5000000000 is out of range (expected 0 to 4294967295)"},
        {fan + "maximum='x'\n", "4: fan[0].maximum: is of type string (expected 0 to 4294967295)"},
        {fan, "1: fan[0].maximum: missing (expected in this table)"},
        {fan + "maxium=1\n", "4: fan[0].maxium: unknown key (expected name, device, description, "
                             "maximum, enable, manual, automatic, on_exit, tach); did you mean "
                             "'maximum'?"},
        {fan + "maximum=1\non_exit='stop'\n",
         "5: fan[0].on_exit: 'stop' is unknown (expected restore, keep, full)"},
        {"[[led]]\nname='l'\ndevice='d'\non=0\n",
         "4: led[0].on: 0 is out of range (expected 1 to 9999)"},
        {"[[led]]\nname='l'\ndevice='d'\non=2\nbi_status=true\n",
         "4: led[0].on: 2 is the second lit state of an LED with bi_status (expected another "
         "brightness)"},
        {"[[fna]]\n",
         "1: fna: unknown key (expected fan, thermal, power, led, descriptor, voip, "
         "preferences, button, firmware, leds, watch, simulated); did you mean 'fan'?"},
        {"[leds]\naccess='flies'\n", "2: leds.access: 'flies' is unknown (expected files, none, or "
                                     "a number); did you mean 'files'?"},
        {"[[leds.file]]\nmask=1\npath='p'\ncolor='grean'\n",
         "4: leds.file[0].color: 'grean' is unknown (expected red, orange, amber, yellow, green, "
         "cyan, blue, violet, white); did you mean 'green'?"},
        {"[[leds.file]]\nmask=1\npath='p'\nname=''\n",
         "4: leds.file[0].name: is empty (expected a name)"},
        {"fan=[1]\n", "1: fan[0]: is of type integer (expected a table)"},
        {"[descriptor]\ndevice=''\n", "2: descriptor.device: is empty (expected a path)"},
        {"[descriptor]\ndevice='a'\nread_chunk=0\n",
         "3: descriptor.read_chunk: 0 is out of range (expected 1 to 65536)"},
        {"[descriptor]\ndevice=\"a\\u0000b\"\n",
         "2: descriptor.device: contains a zero byte (expected a string without one)"},
        {"[[power]]\nname=\"a\\nb\"\ndevice='d'\n",
         "2: power[0].name: contains a control character (expected a name without one)"},
        {"[[power]]\nname='x'\ndevice='d'\n[[led]]\nname='x'\ndevice='d'\n",
         "5: led[0].name: 'x' is already used by power[0].name (expected a unique name)"},
        {"[[power]]\nname='board-descr-driver'\ndevice='d'\n",
         "2: power[0].name: 'board-descr-driver' is already used by the board descriptor (expected "
         "a unique name)"},
        {"[leds]\ntick_ms=4294968\n",
         "2: leds.tick_ms: 4294968 is out of range (expected 0 to 4294967)"},
        {"[descriptor]\ndevice='a'\nsize=65537\n",
         "3: descriptor.size: 65537 is out of range (expected 1 to 65536)"},
        {"[[led]]\nname=''\n", "2: led[0].name: is empty (expected a name)"},
        {"[[leds.command]]\nword1='a'\nword2='b'\nmask=1\naction=2147483648\n",
         "5: leds.command[0].action: 2147483648 is out of range (expected -2147483648 to "
         "2147483647)"},
        {"[voip]\nborder_controller=1\n",
         "2: voip.border_controller: is of type integer (expected true or false)"},
        {"\"a\\nb\"=1\n", "1: a\\x0ab: unknown key (expected fan, thermal, power, led, descriptor, "
                          "voip, preferences, button, firmware, leds, watch, simulated)"},
        {"[[thermal]]\nname='t'\ndevice='d'\nmaximum=1\nhysteresis=1001\n",
         "5: thermal[0].hysteresis: 1001 is out of range (expected 0 to 1000)"},
        {"[watch]\nperiod_s=0.05\n",
         "2: watch.period_s: 0.05 is out of range (expected 0.1 to 86400)"},
        {"[watch]\nperiod_s=nan\n",
         "2: watch.period_s: nan is out of range (expected 0.1 to 86400)"},
        {"[watch]\nperiod_s='5'\n", "2: watch.period_s: is of type string (expected 0.1 to 86400)"},
        {"[watch]\non_alarm='alarm'\n", "2: watch.on_alarm: 'alarm'" + noLine},
        {"[watch]\non_alarm='a b 2147483648'\n", "2: watch.on_alarm: 'a b 2147483648'" + noLine},
        {"[watch]\non_clear='a b 1 2'\n", "2: watch.on_clear: 'a b 1 2'" + noLine},
        {"[watch]\non_clear=\"a\\tb\"\n", "2: watch.on_clear: 'a\\x09b'" + noLine},
        {"[watch]\non_alarm='a " + std::string(77, 'b') + "'\n", ""},
        {"[watch]\non_alarm='a " + std::string(78, 'b') + "'\n",
         "2: watch.on_alarm: has 80 bytes (expected at most 79)"},
    };
    const TempDir dir;
    for (const auto& each : CASES)
        EXPECT_EQ(complaintOf(dir, each.text), each.complaint) << each.text;
}

TEST(Profile, RefusesWhatIsNotToml) {
    const TempDir dir;
    for (const std::string line : {"border_controller = maybe", "[!]", "[", "x = [1\u0499"})
        EXPECT_EQ(complaintOf(dir, "[voip]\n" + line + "\n").rfind("2: not TOML: ", 0), 0U) << line;
}

TEST(Profile, RefusesNestingThatWouldExhaustTheStack) {
    const TempDir dir;
    EXPECT_EQ(complaintOf(dir, "[descriptor] # " + std::string(256, '.')),
              "1: descriptor.device: missing (expected in this table)");
    std::string name = "a";
    for (int i = 0; i < 257; ++i)
        name += ".a";
    for (const std::string& text : {name + " = 1\n", "[" + name + "]\n", name + " = 1\n=\n"})
        EXPECT_EQ(complaintOf(dir, text), "1: too many dots (expected at most 256 in a line)");
    EXPECT_EQ(complaintOf(dir, "fan = " + std::string(300000, '[')).rfind("1: not TOML: ", 0), 0U);
}

TEST(Profile, RefusesWhatIsNotAFileOfReasonableSize) {
    const TempDir dir;
    dir.makePipe("pipe");
    for (const std::string name : {"missing", ".", "pipe"})
        EXPECT_THROW(Profile::load(dir.path(name)), board::Error) << name;
    EXPECT_EQ(complaintOf(dir, std::string(1024 * 1024, '#')), "");
    EXPECT_EQ(complaintOf(dir, std::string(1024 * 1024 + 1, '#')),
              " is larger than 1048576 bytes, which is the most expected");
}
