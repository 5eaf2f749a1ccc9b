#include <string>
#include <vector>

#include "DRIVER.h"
#include "IDriverRepository.h"
#include "IFanControl.h"
#include "ILedControl.h"
#include "IThermalSensor.h"
#include "OnBoard.h"
#include "board/Host.h"
#include "board/Readings.h"
#include "profile/Profile.h"
#include "support/TempDir.h"

using namespace onboard;

namespace {

/// A driver of the hosted board, found as its clients find it.
template <class Interface>
TYPPtr<Interface> driver(const char* name) {
    TYPPtr<Interface> face;
    EXPECT_TRUE(DRIVER::INSTANCE()->getInterface<Interface>(name, face).isSuccess()) << name;
    EXPECT_TRUE(face && face->isValid()) << name;
    return face;
}

/// The board as its shipped profile describes it.
class Devices : public testing::Test {
protected:
    void SetUp() override {
        for (const board::Device& device : host.devices())
            EXPECT_FALSE(device.kind == kind && device.fault) << device.name << *device.fault;
    }
    explicit Devices(board::DeviceKind itsKind) : kind(itsKind) {}

    const board::DeviceKind kind;
    const board::Profile profile = board::Profile::load(PROFILE);
    const board::Host host{profile};
};

struct Fan : Devices {
    Fan() : Devices(board::DeviceKind::FAN) {}
    /// The level on its eight lines.
    static int lines() {
        int level = 0;
        for (int bit = 0; bit < 8; ++bit)
            level |= (get(LINES, "gpioD" + std::to_string(bit)) == "true" ? 1 : 0) << bit;
        return level;
    }
    const std::string pwm = locate("hwmon:gpio_fan/pwm1");
};

struct Thermal : Devices {
    Thermal() : Devices(board::DeviceKind::THERMAL) {}
};

struct Led : Devices {
    Led() : Devices(board::DeviceKind::LED) {}
    const std::string brightness = locate("led:pca955x:alarm");
};

/// A board with only one device.
board::Profile profileOf(const support::TempDir& dir, const std::string& text) {
    dir.write("board.toml", text);
    return board::Profile::load(dir.path("board.toml"));
}

} // namespace

TEST_F(Fan, TurnsAtEachOfTheFourSpeeds) {
    const auto fan = driver<IFanControl>("fan");
    const std::pair<IFanControl::FanSpeed, int> speeds[] = {{IFanControl::FAN_SPEED_LOW, 85},
                                                            {IFanControl::FAN_SPEED_FULL, 255},
                                                            {IFanControl::FAN_SPEED_HIGH, 170},
                                                            {IFanControl::FAN_SPEED_OFF, 0}};
    for (const auto& [speed, level] : speeds) {
        IFanControl::FanSpeed actual{};
        EXPECT_TRUE(fan->setFanSpeed(speed).isSuccess());
        EXPECT_TRUE(fan->getActualFanSpeed(actual).isSuccess());
        EXPECT_EQ(actual, speed);
        EXPECT_EQ(read(pwm), std::to_string(level));
        EXPECT_EQ(lines(), level);
    }
}

TEST_F(Fan, IsNotHeldByOneThatIsNotEnabled) {
    EXPECT_EQ(write(locate("hwmon:gpio_fan/pwm1_enable"), "0"), "1");
    EXPECT_EQ(write(pwm, std::string("85") + std::string(14, '\0')), "EPERM");
    const support::TempDir dir;
    const board::Profile unaware = profileOf(
        dir, "[[fan]]\nname = 'unaware'\nmaximum = 255\ndevice = 'hwmon:gpio_fan/pwm1'\n");
    const board::Host second(unaware);
    const auto fan = driver<IFanControl>("unaware");
    EXPECT_TRUE(fan->setFanSpeed(IFanControl::FAN_SPEED_LOW).isSuccess());
    EXPECT_EQ(read(pwm), "255"); // without manual control it runs at full speed
    EXPECT_FALSE(board::setFan(second, "unaware", IFanControl::FAN_SPEED_LOW).value);
    const support::TempDir other;
    const board::Profile aware =
        profileOf(other, "[[fan]]\nname = 'aware'\nmaximum = 255\ndevice = 'hwmon:gpio_fan/pwm1'\n"
                         "enable = 'hwmon:gpio_fan/pwm1_enable'\n");
    const board::Host third(aware);
    EXPECT_TRUE(board::setFan(third, "aware", IFanControl::FAN_SPEED_LOW).value);
    EXPECT_EQ(lines(), 85);
}

TEST_F(Fan, TakesARecordWithZeroBytesAndNothingThatIsNoLevel) {
    EXPECT_EQ(write(pwm, std::string("170") + std::string(13, '\0')), "16");
    EXPECT_EQ(read(pwm), "170");
    for (const std::string text : {"256", "-1", "x", " 12", "12 "})
        EXPECT_EQ(write(pwm, text), "EINVAL") << text;
    EXPECT_EQ(write(pwm, ""), "0");
    EXPECT_EQ(read(pwm), "170");
    EXPECT_EQ(write(pwm, "12\n"), "3");
    EXPECT_EQ(read(pwm), "12");
    const support::TempDir dir;
    const board::Profile large =
        profileOf(dir, "[[fan]]\nname = 'large'\nmaximum = 1000\ndevice = 'hwmon:gpio_fan/pwm1'\n");
    const board::Host second(large);
    EXPECT_TRUE(driver<IFanControl>("large")->setFanSpeed(IFanControl::FAN_SPEED_FULL).isSuccess());
    EXPECT_EQ(read(pwm), "12");
}

TEST_F(Thermal, FollowsTheSensorFromFrostToHeat) {
    const auto sensor = driver<IThermalSensor>("thermal");
    // The chip measures in steps of 1/16 degree.
    const std::pair<const char*, float> table[] = {
        {"-40000", -40.0F}, {"-125", -0.125F}, {"0", 0.0F},        {"25500", 25.5F},
        {"42625", 42.625F}, {"85000", 85.0F},  {"125000", 125.0F}, {"-1000", -1.0F}};
    for (const auto& [outside, expected] : table) {
        set(SENSOR, "temperature", outside);
        float celsius = 999;
        EXPECT_TRUE(until([&, wanted = expected] {
            return !sensor->getTemperature(celsius).isSuccess() || celsius == wanted;
        })) << "at "
            << outside << ": " << celsius;
        EXPECT_EQ(celsius, expected);
    }
}

TEST_F(Thermal, FailsWhileItsDriverIsAwayAndComesBack) {
    const auto sensor = driver<IThermalSensor>("thermal");
    const std::string file = locate("hwmon:tmp105/temp1_input");
    float celsius = 999;
    {
        const Unbound away("i2c/drivers/lm75", "1-0048");
        EXPECT_EQ(read(file), "ENOENT");
        EXPECT_FALSE(sensor->getTemperature(celsius).isSuccess());
        EXPECT_EQ(celsius, 0);
        EXPECT_TRUE(sensor->isValid());
        EXPECT_EQ(board::readTemperature(host, "thermal").value.fault(),
                  "the temperature can't be read: " + file +
                      ": can't open: No such file or directory");
    }
    // Its number may have changed: a new host finds it by its name.
    const support::TempDir dir;
    const board::Profile again = profileOf(
        dir, "[[thermal]]\nname = 'again'\nmaximum = 85\ndevice = 'hwmon:tmp105/temp1_input'\n");
    const board::Host second(again);
    EXPECT_TRUE(board::readTemperature(second, "again").value);
}

TEST_F(Led, ShowsEachStateAndGivesItBackAfterBothOverlays) {
    const auto led = driver<ILedControl>("alarm");
    // The kernel writes to a chip on a bus after the call has returned, and reads from the chip.
    const auto shows = [&](unsigned expected) {
        unsigned state = 9;
        EXPECT_TRUE(
            until([&] { return !led->getLedStatus(state).isSuccess() || state == expected; }));
        EXPECT_EQ(read(brightness), std::to_string(expected));
        const std::string light = get(LED_CHIP, "led0");
        EXPECT_EQ(light == "\"off\"", expected == 0) << light;
        EXPECT_NE(light, "\"on\"") << "1 and 2 are next to nothing of 255";
        return state == expected;
    };
    for (const unsigned state : {1U, 2U, 0U, 1U}) {
        EXPECT_TRUE(led->setLedStatus(state).isSuccess());
        EXPECT_TRUE(shows(state));
    }
    EXPECT_TRUE(led->setLedBiStatus(1).isSuccess());
    EXPECT_TRUE(shows(2));
    EXPECT_TRUE(led->setLedStatus(0).isSuccess());
    EXPECT_TRUE(shows(2));
    EXPECT_TRUE(led->setLedBiStatus(0).isSuccess());
    EXPECT_TRUE(shows(0));

    EXPECT_TRUE(led->enableLedToggle().isSuccess());
    for (const unsigned phase : {1U, 2U, 1U, 2U}) {
        EXPECT_TRUE(led->setLedToggleStatus(1).isSuccess());
        EXPECT_TRUE(shows(phase));
    }
    EXPECT_TRUE(led->disableLedToggle().isSuccess());
    EXPECT_TRUE(shows(0));
}

TEST_F(Led, HasNoSecondLitStateWhereItsMaximumIsOne) {
    const std::string simple = locate("led:status");
    EXPECT_EQ(write(simple, std::string("2\0\0\0", 4)), "4");
    EXPECT_EQ(read(simple), "1");
    EXPECT_EQ(get(LINES, STATUS_LINE), "true");
    for (const std::string text : {"-1", "x"})
        EXPECT_EQ(write(simple, text), "EINVAL") << text;
    const support::TempDir dir;
    const board::Profile two =
        profileOf(dir, "[[led]]\nname = 'two'\nbi_status = true\ndevice = 'led:status'\n");
    const board::Host second(two);
    EXPECT_TRUE(driver<ILedControl>("two")->setLedStatus(2).isSuccess());
    EXPECT_FALSE(board::setLed(second, "two", 2).value);
    EXPECT_TRUE(board::setLed(second, "two", 0).value);
    EXPECT_EQ(get(LINES, STATUS_LINE), "false");
}

TEST_F(Led, WrittenToZeroLosesItsTrigger) {
    const std::string trigger = brightness.substr(0, brightness.rfind('/')) + "/trigger";
    EXPECT_EQ(write(trigger, "default-on"), "10");
    EXPECT_TRUE(until([&] { return read(brightness) == "255"; }));
    EXPECT_TRUE(driver<ILedControl>("alarm")->setLedStatus(0).isSuccess());
    EXPECT_EQ(read(trigger).rfind("[none]", 0), 0U) << read(trigger);
    // As with a maximum of 1, a value above it is not an error.
    EXPECT_EQ(write(brightness, "256"), "3");
    EXPECT_TRUE(until([&] { return read(brightness) == "255"; }));
    EXPECT_EQ(write(brightness, "0"), "1");
}
