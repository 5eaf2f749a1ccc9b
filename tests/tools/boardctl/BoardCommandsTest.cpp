#include <algorithm>
#include <csignal>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/Boardctl.h"
#include "support/Program.h"
#include "support/TempDir.h"

using nlohmann::json;
using support::boardctl;
using support::fanProfile;
using support::Outcome;
using support::TempDir;

TEST(BoardCommands, ReportsTheRestWhereOneDeviceFails) {
    const TempDir dir;
    dir.write("eeprom", std::string("\x00\x2D\x00\x08\x12\x34\xAB\xCD\0\0\0\4", 12));
    dir.write("board.toml", fanProfile("nowhere") + "[descriptor]\ndevice = \"eeprom\"\n");
    const Outcome outcome =
        boardctl({"--board", dir.path("board.toml"), "info", "--format", "json"});
    EXPECT_EQ(outcome.status, 1);
    const json info = json::parse(outcome.out);
    EXPECT_TRUE(info["fans"][0]["speed"].is_null());
    EXPECT_EQ(info["drivers"][0]["name"], "fan");
    EXPECT_TRUE(info["drivers"][0].contains("error"));
    EXPECT_EQ(info["drivers"][1]["name"], "board-descr-driver");
    EXPECT_EQ(info["drivers"][1]["rows"][1],
              json({{"level", 2}, {"index", 0}, {"key", "Platform ID"}, {"value", "12 34"}}));
}

TEST(BoardCommands, RunShowsTheBoardAndEndsInOrderOnATerminationSignal) {
    for (const int signal : {SIGTERM, SIGINT}) {
        support::Program program({BOARDCTL, "run", "--format", "json"});
        ASSERT_TRUE(program.waitForOutput("{\"event\":\"ready\"}\n"));
        program.signal(signal);
        const Outcome outcome = program.finish();
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        for (const std::string text : {R"("event":"connected","kind":"fan")",
                                       R"("key":"Platform ID")", "{\"event\":\"stopped\"}\n"})
            EXPECT_NE(outcome.out.find(text), std::string::npos) << outcome.out;
    }
}

TEST(BoardCommands, RunGoesOnWithoutADeviceThatFails) {
    const TempDir dir;
    dir.write("board.toml", fanProfile("nowhere") + "[descriptor]\ndevice = \"gone\"\n");
    const Outcome outcome = boardctl({"--board", dir.path("board.toml"), "run", "--for", "0"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    for (const std::string text : {"board.toml:3: fan[0].device: ", "FAILED TO OPEN DEVICE"})
        EXPECT_NE(outcome.err.find(text), std::string::npos) << text << "\n" << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 2) << outcome.err;
    EXPECT_NE(outcome.out.find("ready\nstopped\n"), std::string::npos) << outcome.out;
}

TEST(BoardCommands, MakesASimulatedBoardThatItCanHostAndRefusesAFullFolder) {
    const TempDir dir;
    EXPECT_EQ(boardctl({"sim", "create", dir.path("sim")}).status, 0);
    const Outcome show = boardctl({"--board", dir.path("sim/board.toml"), "bd", "show"});
    EXPECT_EQ(show.status, 0) << show.err;
    EXPECT_NE(show.out.find("192.0.2.10"), std::string::npos) << show.out;

    EXPECT_NE(boardctl({"--board", dir.path("sim"), "info"})
                  .err.find("did you mean '" + dir.path("sim/board.toml")),
              std::string::npos);
    const Outcome again = boardctl({"sim", "create", dir.path("sim")});
    EXPECT_EQ(again.status, 1);
    EXPECT_NE(again.err.find("not empty"), std::string::npos) << again.err;
}
