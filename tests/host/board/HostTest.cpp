#include "board/Host.h"

#include <filesystem>

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

TEST(Host, LeavesADriverOfTheSameNameToItsOwner) {
    const TempDir dir;
    dir.write("speed", "0");
    dir.write("board.toml", "[[fan]]\nname='fan'\ndevice='speed'\nmaximum=255\n");
    const board::Profile profile = board::Profile::load(dir.path("board.toml"));
    const board::Host first(profile);
    EXPECT_TRUE(board::Host(profile).faultOf("fan"));
    EXPECT_TRUE(board::readFan(first, "fan").value);
    EXPECT_EQ(board::readPower(first, "fan").value.fault(), "is another kind of driver");
    EXPECT_EQ(board::readFan(first, "gone").value.fault(), "DRIVER 'gone' NOT FOUND");
    EXPECT_EQ(
        board::readFan(board::Host(profile, {board::DeviceKind::POWER, ""}), "fan").value.fault(),
        "is not a device of this host");
}

TEST(Host, GivesBackTheFansThatItHasSetAsTheProfileAsks) {
    const struct {
        const char* onExit;
        std::string speed;
        std::string mode;
    } TABLE[] = {
        {"", "77\n", "5\n"},
        {"on_exit='keep'\n", "85" + std::string(14, '\0'), "3\n"},
        {"on_exit='full'\n", "255" + std::string(13, '\0'), "3\n"},
    };
    for (const auto& row : TABLE) {
        SCOPED_TRACE(row.onExit);
        const TempDir dir;
        dir.write("speed", "77\n");
        dir.write("mode", "5\n");
        dir.write("board.toml", "[[fan]]\nname='fan'\ndevice='speed'\nmaximum=255\nenable='mode'\n"
                                "manual=3\n" +
                                    std::string(row.onExit));
        const board::Profile profile = board::Profile::load(dir.path("board.toml"));
        const board::Host host(profile);
        EXPECT_TRUE(board::readFan(host, "fan").value);
        EXPECT_TRUE(host.giveBack().empty());
        EXPECT_EQ(dir.read("speed") + dir.read("mode"), "77\n5\n") << "nothing was set";
        EXPECT_TRUE(board::setFan(host, "fan", IFanControl::FAN_SPEED_FULL).value);
        EXPECT_EQ(dir.read("mode"), "3\n");
        EXPECT_TRUE(board::setFan(host, "fan", IFanControl::FAN_SPEED_LOW).value);
        EXPECT_TRUE(host.giveBack().empty());
        EXPECT_EQ(dir.read("speed"), row.speed);
        EXPECT_EQ(dir.read("mode"), row.mode);
        EXPECT_TRUE(board::setFan(host, "fan", IFanControl::FAN_SPEED_OFF).value);
        EXPECT_EQ(dir.read("mode"), "3\n") << "it is taken over again";
    }
}

TEST(Host, GivesBackAFansModeEvenIfItsSpeedCanNotBe) {
    const TempDir dir;
    dir.write("speed", "77\n");
    dir.write("mode", "5\n");
    dir.write("board.toml", "[[fan]]\nname='fan'\ndevice='speed'\nmaximum=255\nenable='mode'\n");
    const board::Profile profile = board::Profile::load(dir.path("board.toml"));
    const board::Host host(profile);
    EXPECT_TRUE(board::setFan(host, "fan", IFanControl::FAN_SPEED_FULL).value);
    std::filesystem::remove(dir.path("speed"));
    EXPECT_EQ(host.giveBack(),
              std::vector{"fan 'fan': can't be given back: " + dir.path("board.toml") +
                          ":3: fan[0].device: " + dir.path("speed") +
                          ": can't open: No such file or directory"});
    EXPECT_EQ(dir.read("mode"), "5\n");
    std::filesystem::remove(dir.path("mode"));
    EXPECT_EQ(board::setFan(host, "fan", IFanControl::FAN_SPEED_LOW).value.fault(),
              dir.path("board.toml") + ":5: fan[0].enable: " + dir.path("mode") +
                  ": can't open: No such file or directory");
    EXPECT_FALSE(std::filesystem::exists(dir.path("speed"))) << "nothing is created";
}
