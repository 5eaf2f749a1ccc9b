#include "board/Host.h"

#include <gtest/gtest.h>

#include "board/Readings.h"
#include "board/Report.h"
#include "simulation/SimulatedBoard.h"
#include "support/TempDir.h"

using support::TempDir;

TEST(Host, HostsTheSimulatedBoardAndTakesItsDriversAwayAgain) {
    const board::ScratchBoard scratch;
    const board::Profile profile = board::Profile::load(scratch.board().profile());
    {
        const board::Host host(profile);
        for (const board::Device& device : host.devices())
            EXPECT_FALSE(device.fault) << device.name << ": " << *device.fault;
        EXPECT_TRUE(board::setFan(host, "fan", IFanControl::FAN_SPEED_LOW).value);
        EXPECT_EQ(scratch.board().fanRecord(), "85" + std::string(14, '\0'));
        EXPECT_TRUE(board::loadDescriptor(host));
        EXPECT_EQ(host.descriptor()->getTags().size(), 8U);
    }
    const board::Host again(profile);
    for (const board::Device& device : again.devices())
        EXPECT_FALSE(device.fault) << device.name << " again: " << *device.fault;
}

TEST(Host, LeavesADriverOfTheSameNameToItsOwnerAndEnablesItsFanFirst) {
    const TempDir dir;
    dir.write("speed", "0");
    dir.write("enable", "0");
    dir.write("board.toml", "[[fan]]\nname='fan'\ndevice='speed'\nenable='enable'\nmaximum=255\n");
    const board::Profile profile = board::Profile::load(dir.path("board.toml"));
    const board::Host first(profile);
    EXPECT_EQ(dir.read("enable"), "1");
    EXPECT_TRUE(board::Host(profile).faultOf("fan"));
    EXPECT_TRUE(board::readFan(first, "fan").value);
    EXPECT_EQ(board::readPower(first, "fan").value.fault(), "is another kind of driver");
    EXPECT_EQ(board::readFan(first, "gone").value.fault(), "DRIVER 'gone' NOT FOUND");
}
