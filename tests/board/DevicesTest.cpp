#include <string>

#include "OnBoard.h"
#include "support/TempDir.h"

using namespace onboard;

TEST(DeviceFiles, AcceptClampAndRejectWhatIsWritten) {
    const std::string zeros(13, '\0');
    const struct {
        const char* device;
        std::string bytes;
        const char* result;
        const char* held; ///< by the device afterwards
    } table[] = {
        {PWM_ENABLE, "1", "1", "1"},
        {PWM_ENABLE, "2", "EINVAL", "1"}, // this driver has no automatic control
        {PWM, "170" + zeros, "16", "170"},
        {PWM, "256", "EINVAL", "170"},
        {PWM, "-1", "EINVAL", "170"},
        {PWM_ENABLE, "0", "1", "0"},
        {PWM, "85" + zeros, "EPERM", "255"}, // without manual control it runs at full speed
        {STATUS_LED, "2" + zeros.substr(0, 3), "4", "1"},
        {STATUS_LED, "-1", "EINVAL", "1"},
        {STATUS_LED, "0", "1", "0"},
        {ALARM_LED, "2" + zeros.substr(0, 3), "4", "2"},
        {ALARM_LED, "256", "3", "255"},
        {ALARM_LED, "0", "1", "0"},
    };
    for (const auto& row : table) {
        const std::string shown = row.device + (" " + testing::PrintToString(row.bytes));
        EXPECT_EQ(write(row.device, row.bytes), row.result) << shown;
        // The kernel writes to a chip on a bus after the call has returned.
        EXPECT_TRUE(until([&] { return read(row.device) == row.held; }))
            << shown << read(row.device);
    }
}

TEST(Probe, FindsEachDeviceAndMakesAProfileThatPassesTheCheck) {
    const std::string found = call({"probe"}).out;
    for (const char* device :
         {"hwmon:gpio_fan/fan1_input ", "hwmon:gpio_fan/pwm1 ", "hwmon:tmp105/temp1_input ",
          "led:line ", "led:pca955x:alarm ", "led:pca955x:power ", "led:status ",
          "/sys/bus/i2c/devices/1-0050/eeprom ", "/dev/input/event0 "})
        EXPECT_NE(found.find(std::string("\n  ") + device), std::string::npos) << device << found;
    const support::TempDir dir;
    dir.write("board.toml", call({"probe", "--toml"}).out);
    const std::string profile = dir.path("board.toml");
    const support::Outcome check =
        support::Program({"/bin/boardctl", "--board", profile, "check"}).finish();
    EXPECT_EQ(check.out, profile + ": nothing wrong found\n") << dir.read("board.toml");
}

TEST(Fan, TurnsAtEachOfTheFourSpeeds) {
    EXPECT_EQ(write(PWM_ENABLE, "0"), "1"); // boardctl takes the fan over
    const std::pair<std::string, int> table[] = {
        {"low", 85}, {"full", 255}, {"high", 170}, {"off", 0}};
    for (const auto& [speed, level] : table) {
        expectOutput(call({"fan", speed}), "fan: " + speed + "\n");
        for (int bit = 0; bit < 8; ++bit)
            EXPECT_EQ(isLit("D" + std::to_string(bit)), (level >> bit & 1) == 1) << speed << bit;
    }
}

TEST(Fan, IsOnlyTakenOverToSetItAndGivenBackByAHost) {
    EXPECT_EQ(write(PWM_ENABLE, "0"), "1");
    expectOutput(call({"fan"}), "fan: full\n");
    EXPECT_EQ(read(PWM_ENABLE), "0");
    const support::Outcome tour = call({"run", "--tour", "-y"});
    EXPECT_NE(tour.out.find("fan 'fan': set to low, reads back low\n"), std::string::npos)
        << tour.out << tour.err;
    EXPECT_EQ(tour.status, 0) << tour.err;
    EXPECT_EQ(read(PWM_ENABLE), "0");
    EXPECT_EQ(read(PWM), "255");
    // This driver has no automatic control.
    expectFault(call({"fan", "auto"}), "pwm1_enable: can't write: Invalid argument");
}

TEST(Thermal, FollowsTheSensorFromFrostToHeat) {
    // The chip measures in steps of 1/16 degree.
    const std::pair<std::string, std::string> table[] = {
        {"-40000", "-40.000"}, {"-125", "-0.125"},    {"0", "0.000"},
        {"42625", "42.625"},   {"125000", "125.000"}, {"31500", "31.500"}};
    for (const auto& [outside, celsius] : table) {
        set(SENSOR, outside);
        EXPECT_TRUE(until([&, held = outside] { return read(TEMPERATURE) == held; })) << outside;
        expectOutput(call({"temp"}), "thermal: " + celsius + " degrees Celsius, maximum 85\n");
    }
}

TEST(Led, OnABusShowsEachStateAndReturnsToItAfterOverlayAndBlinking) {
    const std::pair<std::vector<std::string>, std::string> table[] = {
        {{"1"}, "1"},
        {{"2"}, "2"},
        {{"bi", "on", "--for", "0"}, "2"},
        {{"1"}, "1"},
        {{"blink", "2", "2"}, "1"},
        {{"0"}, "0"}};
    for (auto [words, state] : table) {
        words.insert(words.begin(), {"led", "alarm"});
        expectOutput(call(words), "alarm: " + state + "\n");
        const std::string light = get(ALARM_LIGHT);
        EXPECT_EQ(light == "\"off\"", state == "0") << state << light;
        EXPECT_EQ(light == "\"on\"", state == "1") << "2 is next to nothing of 255";
    }
}

// Runs in the third boot, because only then does the EEPROM hold a list of tags.
TEST(Boot3Devices, FailByNameWhileTheirDriverIsAwayAndThenReturn) {
    const char NO_LED[] = "there is no LED 'pca955x:alarm' (there are: 'line', 'status')";
    const struct {
        std::vector<std::string> words;
        const char* file;
        const char* driver;
        const char* device;
        const char* reason;
    } table[] = {
        {{"fan"}, PWM, "platform/drivers/gpio-fan", "fan", "no monitor is named 'gpio_fan'"},
        {{"temp"}, TEMPERATURE, "i2c/drivers/lm75", "1-0048", "no monitor is named 'tmp105'"},
        {{"led", "alarm"}, ALARM_LED, "i2c/drivers/leds-pca955x", "1-0060", NO_LED},
        {{"bd", "check"}, EEPROM, "i2c/drivers/at24", "1-0050", "No such file or directory"},
    };
    for (const auto& row : table) {
        const std::string path = locate(row.file);
        whileUnbound(row.driver, row.device, [&] {
            EXPECT_EQ(read(path), "ENOENT");
            expectFault(call(row.words), row.reason);
        });
        EXPECT_EQ(call(row.words).status, 0) << row.device;
    }
}
