#include "profile/DeviceLocator.h"

#include <gtest/gtest.h>

#include "support/Failure.h"
#include "support/TempDir.h"

TEST(DeviceLocator, FindsMonitorsAndLedsByNameOrListsWhatIsThere) {
    const support::TempDir sysfs;
    sysfs.makeFolder("class/leds/alarm");
    for (const std::string monitor : {"0 cpu", "1 cpu", "7 tmp105"}) {
        const std::string folder = "class/hwmon/hwmon" + monitor.substr(0, 1);
        sysfs.makeFolder(folder);
        sysfs.write(folder + "/name", monitor.substr(2) + "\n");
    }
    const std::string present = "(expected one; there are: 'cpu' at hwmon0, 'cpu' at hwmon1, "
                                "'tmp105' at hwmon7)";
    const std::string noFile = " is not a hardware monitor's file (expected hwmon:NAME/FILE)";
    const std::string noLed = " is not an LED's name (expected led:NAME)";
    const std::pair<std::string, std::string> CASES[] = {
        {"hwmon:tmp105/temp1_input", sysfs.path("./class/hwmon/hwmon7/temp1_input")},
        {"led:alarm", sysfs.path("./class/leds/alarm/brightness")},
        {"/dev/fan:hwmon:x", "/dev/fan:hwmon:x"},
        {"led:alram",
         "led:alram: there is no LED 'alram' (there are: 'alarm'); did you mean 'alarm'?"},
        {"hwmon:tmp15/x",
         "hwmon:tmp15/x: no monitor is named 'tmp15' " + present + "; did you mean 'tmp105'?"},
        {"hwmon:cpu/x", "hwmon:cpu/x: more than one monitor is named 'cpu' " + present},
        {"led:", "led::" + noLed},
        {"led:..", "led:..:" + noLed},
        {"led:a/b", "led:a/b:" + noLed},
        {"hwmon:cpu", "hwmon:cpu:" + noFile},
        {"hwmon:/pwm1", "hwmon:/pwm1:" + noFile},
        {"hwmon:cpu/", "hwmon:cpu/:" + noFile},
        {"hwmon:cpu/.", "hwmon:cpu/.:" + noFile},
    };
    for (const auto& [device, outcome] : CASES) {
        std::string found;
        const std::string failure = support::failureOf(
            [&, path = device] { found = board::DeviceLocator(sysfs.path(".")).locate(path); });
        EXPECT_EQ(found.empty() ? failure : found, outcome);
    }
}
