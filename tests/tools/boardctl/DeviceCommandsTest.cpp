#include <csignal>
#include <cstdlib>
#include <sched.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "support/Boardctl.h"
#include "support/Program.h"
#include "support/TempDir.h"

using nlohmann::json;
using support::boardctl;
using support::fanProfile;
using support::Outcome;
using support::TempDir;

TEST(DeviceCommands, SetsAFanOnAnOrdinaryFileAndReadsItBack) {
    const TempDir dir;
    dir.write("fan.value", "0\n");
    dir.write("board.toml", fanProfile("fan.value"));
    const Outcome outcome = boardctl({"--board", dir.path("board.toml"), "fan", "high"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "fan: high\n");
    EXPECT_EQ(dir.read("fan.value"), "170" + std::string(13, '\0'));
}

TEST(DeviceCommands, FailsWhereAFanSilentlyRefusesOrCanNotBeUsed) {
    const TempDir dir;
    dir.write("deaf.toml", fanProfile("/dev/null"));
    dir.write("missing.toml", fanProfile("nowhere"));
    const Outcome deaf =
        boardctl({"--board", dir.path("deaf.toml"), "fan", "full", "--format", "json"});
    EXPECT_EQ(deaf.status, 1);
    EXPECT_NE(deaf.err.find("the device holds off after full was written"), std::string::npos)
        << deaf.err;

    const Outcome missing =
        boardctl({"--board", dir.path("missing.toml"), "fan", "--format", "json"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(json::parse(missing.out)[0]["speed"].is_null());
    EXPECT_NE(json::parse(missing.out)[0]["error"].get<std::string>().find("No such file"),
              std::string::npos);
}

TEST(DeviceCommands, ReadsSensorsAndSaysWhichOnesThereAre) {
    const TempDir dir;
    dir.write("sensor", "45123\n");
    dir.write("board.toml", "[[thermal]]\nname='a'\ndevice='sensor'\nmaximum=85\n"
                            "[[thermal]]\nname='b'\ndevice='gone'\nmaximum=90\n");
    const std::string board = dir.path("board.toml");
    const Outcome both = boardctl({"--board", board, "temp", "--format", "json"});
    EXPECT_EQ(both.status, 1);
    EXPECT_EQ(json::parse(both.out)[0],
              json({{"name", "a"}, {"description", ""}, {"celsius", 45.123}, {"maximum", 85}}));
    EXPECT_TRUE(json::parse(both.out)[1]["celsius"].is_null());
    EXPECT_EQ(boardctl({"--board", board, "temp", "--name", "a"}).out,
              "a: 45.123 degrees Celsius, maximum 85\n");
    EXPECT_NE(boardctl({"--board", board, "temp", "--name", "c"}).err.find("(there are: a, b)"),
              std::string::npos);
    EXPECT_EQ(boardctl({"--board", board, "power"}).status, 1) << "the board has none";
}

TEST(DeviceCommands, SetsOverlaysAndBlinksALedAndGivesItBack) {
    const TempDir dir;
    ASSERT_EQ(boardctl({"sim", "create", dir.path("sim")}).status, 0);
    const auto led = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"--board", dir.path("sim/board.toml"), "led", "status"});
        return boardctl(words);
    };
    const auto held = [&] { return std::string(dir.read("sim/dev/status").c_str()); };
    EXPECT_EQ(led({"1"}).out, "status: 1\n");
    EXPECT_EQ(led({"bi", "on", "--for", "0"}).out, "status: 1\n");
    EXPECT_EQ(held(), "1");
    EXPECT_EQ(led({"blink", "2", "1"}).status, 0);
    EXPECT_EQ(held(), "1");
    EXPECT_EQ(led({"2"}).status, 0);
    const Outcome off = led({"bi", "off"});
    EXPECT_EQ(off.status, 0);
    EXPECT_NE(off.err.find("switching it off"), std::string::npos) << off.err;
    EXPECT_EQ(held(), "0");
    for (const auto& wrong : std::vector<std::vector<std::string>>{{"3"},
                                                                   {"on"},
                                                                   {"bi", "up"},
                                                                   {"blink", "2"},
                                                                   {"blink", "0", "10"},
                                                                   {"blink", "2", "-5"},
                                                                   {"1", "--for", "1"}})
        EXPECT_EQ(led(wrong).status, 2) << wrong[0];
    EXPECT_EQ(held(), "0") << "nothing was written";
}

TEST(DeviceCommands, WaitsForALedThatReadsAsBeforeJustAfterAWrite) {
    // A terminal is such a LED: it takes what is written, and gives line by line what stands here.
    const auto led = [](const std::vector<std::string>& words, const std::string& reads) {
        const int device = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        ::grantpt(device);
        ::unlockpt(device);
        const char* const name = ::ptsname(device);
        const std::string path = name ? name : "no terminal";
        const int held = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        const std::string lines = reads + "1\n1\n1\n1\n"; // a read too many shall not wait
        EXPECT_EQ(::write(device, lines.data(), lines.size()), static_cast<ssize_t>(lines.size()));
        const TempDir dir;
        dir.write("board.toml",
                  "[[led]]\nname = 'slow'\nbi_status = true\ndevice = '" + path + "'\n");
        std::vector<std::string> call{"--board", dir.path("board.toml"), "led", "slow"};
        call.insert(call.end(), words.begin(), words.end());
        Outcome outcome = boardctl(call);
        ::close(held);
        ::close(device);
        return outcome;
    };
    const std::string former = "1\n1\n"; // to remember it: for boardctl and for the driver
    const Outcome overlay = led({"bi", "on", "--for", "0"}, former + "1\n2\n" + "2\n2\n1\n");
    EXPECT_EQ(overlay.out, "slow: 1\n") << overlay.err;
    // A 0 takes three reads: the second is the host's look at the device, of one byte.
    const std::string dark = "0\n00\n";
    const Outcome blinks =
        led({"blink", "1", "2"}, former + "1\n" + "1\n" + dark + dark + dark + "1\n");
    EXPECT_EQ(blinks.out, "slow: 1\n") << blinks.err;
}

TEST(DeviceCommands, GivesALedBackWhenASignalEndsTheBlinking) {
    const TempDir dir;
    ASSERT_EQ(boardctl({"sim", "create", dir.path("sim")}).status, 0);
    support::Program program({BOARDCTL, "--board", dir.path("sim/board.toml"), "led", "status",
                              "blink", "1000", "600000"});
    while (std::string(dir.read("sim/dev/status").c_str()) != "1")
        ::sched_yield();
    program.signal(SIGINT);
    EXPECT_EQ(program.finish().status, 0);
    EXPECT_STREQ(dir.read("sim/dev/status").c_str(), "0");
}
