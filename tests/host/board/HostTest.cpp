#include "board/Host.h"

#include <gtest/gtest.h>

#include "DRIVER.h"
#include "IDriverRepository.h"
#include "board/Readings.h"
#include "board/Report.h"
#include "simulation/SimulatedBoard.h"
#include "support/TempDir.h"

using support::TempDir;

namespace {

board::Profile profileOf(const TempDir& dir, const std::string& text) {
    dir.write("board.toml", text);
    return board::Profile::load(dir.path("board.toml"));
}

std::string fan(const std::string& name, const std::string& device, const std::string& more = "") {
    return "[[fan]]\nname = \"" + name + "\"\ndevice = \"" + device + "\"\nmaximum = 255\n" + more;
}

unsigned registeredDrivers() {
    VELM_List<String> names;
    DRIVER::INSTANCE()->getDriverNames(names);
    return names.size();
}

} // namespace

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
    EXPECT_EQ(registeredDrivers(), 0U);
    const board::Host again(profile); // its endpoints were taken away too
    EXPECT_FALSE(again.faultOf("fan"));
}

TEST(Host, LeavesADriverOfTheSameNameToItsOwnerAndEnablesItsFanFirst) {
    const TempDir dir;
    dir.write("speed", "0");
    dir.write("enable", "0");
    const board::Profile profile = profileOf(dir, fan("fan", "speed", "enable = \"enable\"\n"));
    const board::Host first(profile);
    EXPECT_EQ(dir.read("enable"), "1");
    EXPECT_TRUE(board::Host(profile).faultOf("fan"));
    EXPECT_TRUE(board::readFan(first, "fan").value);
    EXPECT_EQ(board::readPower(first, "fan").value.fault(), "is another kind of driver");
    EXPECT_EQ(board::readFan(first, "gone").value.fault(), "DRIVER 'gone' NOT FOUND");
}
