#include "leds/LedStates.h"

#include <fstream>

#include <gtest/gtest.h>
#include <poll.h>

#include "support/TempDir.h"

TEST(LedStates, FollowTheLastByteOfAFileAndWhatAPipeDelivers) {
    const support::TempDir dir;
    dir.write("file", "10");
    dir.makePipe("pipe");
    dir.write("pipe.state", "?");
    dir.makePipe("other");
    dir.makePipe("other.state"); // opening it must not wait for a reader
    board::EventQueue events;
    const board::LedStates leds({{1, "file", dir.path("file")},
                                 {2, "pipe", dir.path("pipe")},
                                 {4, "unknown", ""},
                                 {8, "other", dir.path("other")}},
                                1, true, events);
    const auto nextChange = [&] {
        pollfd arrived{events.descriptor(), POLLIN, 0};
        EXPECT_EQ(::poll(&arrived, 1, -1), 1);
        const auto change = std::get<board::event::LedChanged>(events.take().entries.at(0).event);
        return change.name + (change.isLit ? " on" : " off");
    };
    EXPECT_EQ(nextChange(), "file off");
    dir.write("file", "101");
    EXPECT_EQ(nextChange(), "file on");
    std::ofstream(dir.path("pipe")) << "1?";
    EXPECT_EQ(nextChange(), "pipe on");
    EXPECT_EQ(dir.read("pipe.state"), "1");
    std::string states;
    for (const auto& state : leds.states())
        states += state.name + (state.isLit ? *state.isLit ? " on," : " off," : " ?,");
    EXPECT_EQ(states, "file on,pipe on,unknown ?,other ?,");
}

TEST(LedStates, PassOnWhatTheSequencerWritesAsTheBrightnessOfADimmableLed) {
    const support::TempDir dir;
    dir.write("led", "77\n");
    board::EventQueue events;
    const board::LedStates leds(
        {{1, "led", dir.path("led"), 255}, {2, "gone", dir.path("gone"), 255}}, 1, true, events);
    const auto nextEvent = [&] {
        pollfd arrived{events.descriptor(), POLLIN, 0};
        EXPECT_EQ(::poll(&arrived, 1, -1), 1);
        return events.take().entries.at(0).event;
    };
    const auto write = [&](std::size_t led, const char* bytes) {
        std::ofstream(leds.relayOf(led)) << bytes;
    };
    write(0, "0");
    EXPECT_FALSE(std::get<board::event::LedChanged>(nextEvent()).isLit);
    EXPECT_EQ(dir.read("led"), "0\n");
    write(0, "1");
    EXPECT_TRUE(std::get<board::event::LedChanged>(nextEvent()).isLit);
    EXPECT_EQ(dir.read("led"), "255\n");
    write(1, "11"); // reported once
    EXPECT_EQ(std::get<board::event::FaultReport>(nextEvent()).text,
              "leds: " + dir.path("gone") + ": can't open: No such file or directory");
    dir.write("gone", "0");
    write(1, "1");
    EXPECT_EQ(std::get<board::event::LedChanged>(nextEvent()).name, "gone");
    EXPECT_EQ(dir.read("gone"), "255\n");
}
