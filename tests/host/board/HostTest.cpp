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

TEST(Host, KeepsAFaultToItsDevice) {
    const TempDir dir;
    dir.write("good", "200");
    dir.makePipe("pipe");
    const board::Profile profile =
        profileOf(dir, fan("gone", "nowhere") + fan("pipe", "pipe") + fan("folder", ".") +
                           fan("locked", "good", "enable = \"no/enable\"\n") + fan("good", "good") +
                           "[descriptor]\ndevice = \"/dev/zero\"\n");
    const board::Host host(profile);
    for (const std::string name : {"gone", "pipe", "folder", "locked", board::DESCRIPTOR_DRIVER})
        EXPECT_TRUE(host.faultOf(name)) << name;
    EXPECT_EQ(host.faultOf("gone"), dir.path("board.toml") +
                                        ":3: fan[0].device: " + dir.path("nowhere") +
                                        ": can't open: No such file or directory");
    EXPECT_NE(host.faultOf("locked")->find("no/enable: can't enable: No such file"),
              std::string::npos);
    EXPECT_EQ(*board::readFan(host, "good").value, IFanControl::FAN_SPEED_HIGH);
    EXPECT_NE(board::readFan(host, "gone").value.fault().find("nowhere"), std::string::npos);
    EXPECT_NE(board::loadDescriptor(host).fault().find("/dev/zero"), std::string::npos);
}

TEST(Host, EnablesAFanBeforeItConnects) {
    const TempDir dir;
    dir.write("speed", "0");
    dir.write("enable", "0");
    const board::Profile profile = profileOf(dir, fan("fan", "speed", "enable = \"enable\"\n"));
    EXPECT_FALSE(board::Host(profile).faultOf("fan"));
    EXPECT_EQ(dir.read("enable"), "1");
}

TEST(Host, LeavesADriverOfTheSameNameToItsOwner) {
    const TempDir dir;
    dir.write("speed", "0");
    const board::Profile profile = profileOf(dir, fan("fan", "speed"));
    const board::Host first(profile);
    {
        const board::Host second(profile);
        EXPECT_TRUE(second.faultOf("fan"));
    }
    EXPECT_TRUE(board::readFan(first, "fan").value);
}
