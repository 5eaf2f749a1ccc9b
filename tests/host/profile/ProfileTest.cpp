#include "profile/Profile.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "base/Error.h"
#include "simulation/SimulatedBoard.h"
#include "support/TempDir.h"

using board::Profile;
using support::TempDir;

namespace {

/// The message of loading `text`, without the folder; "" if it loads.
std::string complaintOf(const TempDir& dir, const std::string& text) {
    dir.write("board.toml", text);
    try {
        Profile::load(dir.path("board.toml"));
    } catch (const board::Error& error) {
        const std::string what = error.what();
        EXPECT_EQ(what.rfind(dir.path(""), 0), 0U) << what;
        EXPECT_EQ(std::count(what.begin(), what.end(), '\n'), 0) << what;
        return what.substr(dir.path("").size());
    }
    return "";
}

} // namespace

TEST(Profile, ReadsTheSimulatedBoardWhole) {
    const board::ScratchBoard scratch;
    const Profile profile = Profile::load(scratch.board().profile());
    const std::string folder = scratch.board().directory();
    ASSERT_EQ(profile.fans.size(), 1U);
    EXPECT_EQ(profile.fans[0].device.path, folder + "/dev/fan");
    EXPECT_EQ(profile.fans[0].maximum, 255U);
    EXPECT_EQ(profile.thermals.at(0).maximum, 85U);
    EXPECT_EQ(profile.powers.at(0).description, "Supply");
    EXPECT_TRUE(profile.leds.at(0).biStatus);
    EXPECT_EQ(profile.descriptor->size, 512U);
    EXPECT_EQ(profile.voip->defaultSipLegs, 30U);
    EXPECT_EQ(profile.preferences->path, folder + "/preferences");
    EXPECT_EQ(profile.button->path, folder + "/dev/button");
    EXPECT_EQ(profile.firmware->path, folder + "/image-info");
    ASSERT_EQ(profile.ledService->commands.size(), 10U);
    EXPECT_EQ(profile.ledService->blinkPattern, 0x0F0F0F0FU);
    EXPECT_EQ(profile.ledService->files.at(1).path.path, folder + "/leds/line");
    EXPECT_EQ(profile.ledService->commands[0].action, LedCtrl::ACTION_BLINK);
    EXPECT_TRUE(profile.ledService->commands[0].isDefault);
    EXPECT_EQ(profile.ledService->commands[2].timeMs, 3000);
}

TEST(Profile, TakesDefaultsDeviceClassesAndPlainNumbers) {
    const TempDir dir;
    dir.write("board.toml",
              "[[fan]]\nname='f'\ndevice='hwmon:tmp105/pwm1'\nmaximum=4294967295\n"
              "[descriptor]\ndevice='/abs'\n[leds]\naccess=7\n"
              "[[leds.command]]\nword1='a'\nword2='b'\nmask=0xFFFFFFFF\naction=-2147483648\n"
              "number=-1\ngroup=3\ntime_ms=-5\n");
    const Profile profile = Profile::load(dir.path("board.toml"));
    EXPECT_EQ(profile.fans[0].device.path, "hwmon:tmp105/pwm1");
    EXPECT_EQ(profile.fans[0].maximum, 4294967295U);
    EXPECT_EQ(profile.fans[0].description, "");
    EXPECT_EQ(profile.descriptor->device.path, "/abs");
    EXPECT_EQ(profile.descriptor->readChunk, 128U);
    EXPECT_EQ(profile.ledService->access, 7);
    EXPECT_EQ(profile.ledService->tickMs, 100U);
    EXPECT_EQ(profile.ledService->commands[0].mask, 0xFFFFFFFFU);
    EXPECT_EQ(profile.ledService->commands[0].action, INT32_MIN);
    EXPECT_EQ(profile.ledService->commands[0].number, -1);
    EXPECT_EQ(profile.ledService->commands[0].group, 3);
    EXPECT_EQ(profile.ledService->commands[0].timeMs, -5);
    EXPECT_FALSE(profile.voip);
}

TEST(Profile, NumbersTheActionsAsTheSequencerDoes) {
    const TempDir dir;
    std::string text;
    for (const std::string word :
         {"on", "off", "blink", "flash", "roll-up", "roll-down", "roll-stop", "defaults"})
        text += "[[leds.command]]\nword1='a'\nword2='b'\nmask=1\naction='" + word + "'\n";
    dir.write("board.toml", text);
    std::int32_t expected = 0;
    const Profile profile = Profile::load(dir.path("board.toml"));
    for (const auto& command : profile.ledService->commands)
        EXPECT_EQ(command.action, expected++);
    EXPECT_EQ(expected, 8);
}

TEST(Profile, SaysFileLineKeyAndWhatWasExpected) {
    const std::string fan = "[[fan]]\nname='f'\ndevice='d'\n";
    const struct {
        std::string text;
        std::string complaint;
    } CASES[] = {
        {"", ""},
        {fan + "maximum=5000000000\n",
         "board.toml:4: fan[0].maximum: 5000000000 is out of range (expected 0 to 4294967295)"},
        {fan + "maximum=-1\n",
         "board.toml:4: fan[0].maximum: -1 is out of range (expected 0 to 4294967295)"},
        {fan + "maximum='x'\n",
         "board.toml:4: fan[0].maximum: is of type string (expected 0 to 4294967295)"},
        {fan + "maximum=2.5\n",
         "board.toml:4: fan[0].maximum: is of type floating-point (expected 0 to 4294967295)"},
        {fan, "board.toml:1: fan[0].maximum: missing (expected in this table)"},
        {fan + "maxium=1\n",
         "board.toml:4: fan[0].maxium: unknown key (expected name, device, description, "
         "maximum, enable); did you mean 'maximum'?"},
        {"[[fna]]\n",
         "board.toml:1: fna: unknown key (expected fan, thermal, power, led, descriptor, voip, "
         "preferences, button, firmware, leds); did you mean 'fan'?"},
        {"[leds]\naccess='flies'\n",
         "board.toml:2: leds.access: 'flies' is unknown (expected files, none, "
         "or a number); did you mean 'files'?"},
        {"\n[fan]\nname='f'\n", "board.toml:2: fan: is of type table (expected tables, [[fan]])"},
        {"fan=[1]\n", "board.toml:1: fan[0]: is of type integer (expected a table)"},
        {"descriptor=1\n",
         "board.toml:1: descriptor: is of type integer (expected a table, [descriptor])"},
        {"[descriptor]\ndevice=1\n",
         "board.toml:2: descriptor.device: is of type integer (expected a string)"},
        {"[descriptor]\ndevice=''\n",
         "board.toml:2: descriptor.device: is empty (expected a path)"},
        {"[descriptor]\ndevice='a'\nread_chunk=0\n",
         "board.toml:3: descriptor.read_chunk: 0 is out of range (expected 1 to 65536)"},
        {"[descriptor]\ndevice=\"a\\u0000b\"\n",
         "board.toml:2: descriptor.device: contains a zero byte (expected a string without one)"},
        {"[[power]]\nname=\"a\\nb\"\ndevice='d'\n",
         "board.toml:2: power[0].name: contains a control character (expected a name without one)"},
        {"[[power]]\nname='x'\ndevice='d'\n[[led]]\nname='x'\ndevice='d'\n",
         "board.toml:5: led[0].name: 'x' is already used by power[0].name (expected a unique "
         "name)"},
        {"[[power]]\nname='board-descr-driver'\ndevice='d'\n",
         "board.toml:2: power[0].name: 'board-descr-driver' is already used by the board "
         "descriptor "
         "(expected a unique name)"},
        {"[[power]]\nname='resource-driver'\ndevice='d'\n",
         "board.toml:2: power[0].name: 'resource-driver' is already used by the VoIP figures "
         "(expected a "
         "unique name)"},
        {"[[power]]\nname=\"a\\u007F\"\ndevice='d'\n",
         "board.toml:2: power[0].name: contains a control character (expected a name without one)"},
        {"[[leds.command]]\nword1='a'\nword2='b'\nmask=1\naction=2147483648\n",
         "board.toml:5: leds.command[0].action: 2147483648 is out of range (expected -2147483648 "
         "to "
         "2147483647)"},
        {"[leds]\naccess=\"a\\nb\"\n",
         "board.toml:2: leds.access: 'a\\x0ab' is unknown (expected files, none, or a number)"},
        {"[voip]\nborder_controller=1\n",
         "board.toml:2: voip.border_controller: is of type integer (expected true or false)"},
        {"[leds]\naccess='some'\n",
         "board.toml:2: leds.access: 'some' is unknown (expected files, none, or a "
         "number)"},
        {"\"a\\nb\"=1\n",
         "board.toml:1: a\\x0ab: unknown key (expected fan, thermal, power, led, descriptor, voip, "
         "preferences, button, firmware, leds)"},
    };
    const TempDir dir;
    for (const auto& each : CASES)
        EXPECT_EQ(complaintOf(dir, each.text), each.complaint) << each.text;
}

TEST(Profile, RefusesWhatIsNotToml) {
    const TempDir dir;
    for (const std::string line : {"border_controller = maybe", "border_controller = f", "[!]",
                                   "[.fan]", "[", "[[\v]]", "x = {.a = 1}",
                                   // letters that share a block with a non-ASCII blank: the
                                   // sanitizer checks what the parser assumes of them
                                   "\u00e9 = 1", "x = [1\u0499", "[\u3042]", "x = 1 \ufdf2"})
        EXPECT_EQ(complaintOf(dir, "[voip]\n" + line + "\n").rfind("board.toml:2: not TOML: ", 0),
                  0U)
            << line;
}

TEST(Profile, RefusesNestingThatWouldExhaustTheStack) {
    const TempDir dir;
    std::string name = "a";
    for (int i = 0; i < 300000; ++i)
        name += ".a";
    for (const std::string& text : {name + " = 1\n", "[" + name + "]\n", name + " = 1\n=\n"})
        EXPECT_EQ(complaintOf(dir, text),
                  "board.toml:1: too many dots (expected at most 256 in a line)");
    EXPECT_EQ(
        complaintOf(dir, "fan = " + std::string(300000, '[')).rfind("board.toml:1: not TOML: ", 0),
        0U);
}

TEST(Profile, RefusesWhatIsNotAFileOfReasonableSize) {
    const TempDir dir;
    dir.makePipe("pipe");
    for (const std::string name : {"missing", ".", "pipe"})
        EXPECT_THROW(Profile::load(dir.path(name)), board::Error) << name;
    EXPECT_NE(complaintOf(dir, std::string(1024 * 1024 + 1, '#')).find("larger than 1048576 bytes"),
              std::string::npos);
}
