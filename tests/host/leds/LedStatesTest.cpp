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
    board::EventQueue events;
    const board::LedStates leds(
        {{1, "file", dir.path("file")}, {2, "pipe", dir.path("pipe")}, {4, "unknown", ""}}, 1, true,
        events);
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
    EXPECT_EQ(states, "file on,pipe on,unknown ?,");
}
