#include "profile/DeviceLocator.h"

#include <gtest/gtest.h>

#include "base/Error.h"
#include "support/TempDir.h"

using board::DeviceLocator;
using support::TempDir;

namespace {

std::string complaintOf(const TempDir& sysfs, const std::string& device) {
    try {
        return "found " + DeviceLocator(sysfs.path(".")).locate(device);
    } catch (const board::Error& error) {
        return error.what();
    }
}

} // namespace

TEST(DeviceLocator, FindsMonitorsAndLedsByNameAndLeavesPathsAlone) {
    const TempDir sysfs;
    sysfs.makeFolder("class/leds/status");
    sysfs.makeFolder("class/hwmon/hwmon0");
    sysfs.makeFolder("class/hwmon/hwmon7");
    sysfs.write("class/hwmon/hwmon0/name", "cpu\n");
    sysfs.write("class/hwmon/hwmon7/name", "tmp105\n");
    const DeviceLocator locator(sysfs.path("."));
    EXPECT_EQ(locator.locate("hwmon:tmp105/temp1_input"),
              sysfs.path("./class/hwmon/hwmon7/temp1_input"));
    EXPECT_EQ(locator.locate("led:status"), sysfs.path("./class/leds/status/brightness"));
    EXPECT_EQ(locator.locate("/dev/fan:hwmon:x"), "/dev/fan:hwmon:x");
}

TEST(DeviceLocator, ListsWhatIsThereIfNoneOrTwoMatch) {
    const TempDir sysfs;
    EXPECT_EQ(complaintOf(sysfs, "led:status"),
              "led:status: there is no LED 'status' (there are: none)");
    sysfs.makeFolder("class/leds/alarm");
    for (const std::string folder : {"class/hwmon/hwmon0", "class/hwmon/hwmon1"}) {
        sysfs.makeFolder(folder);
        sysfs.write(folder + "/name", "cpu\n");
    }
    EXPECT_EQ(complaintOf(sysfs, "led:status"),
              "led:status: there is no LED 'status' (there are: 'alarm')");
    EXPECT_EQ(complaintOf(sysfs, "led:alram"),
              "led:alram: there is no LED 'alram' (there are: 'alarm'); did you mean 'alarm'?");
    EXPECT_EQ(complaintOf(sysfs, "hwmon:fan/pwm1"),
              "hwmon:fan/pwm1: no monitor is named 'fan' (expected one; there are: 'cpu' at "
              "hwmon0, 'cpu' at "
              "hwmon1)");
    EXPECT_EQ(complaintOf(sysfs, "hwmon:cpu/pwm1"),
              "hwmon:cpu/pwm1: more than one monitor is named 'cpu' (expected one; there are: "
              "'cpu' at hwmon0, "
              "'cpu' at hwmon1)");
}

TEST(DeviceLocator, LeadsNowhereOutsideTheDevicesFolder) {
    const TempDir sysfs;
    for (const std::string device : {"led:", "led:..", "led:../hwmon", "hwmon:cpu", "hwmon:/pwm1",
                                     "hwmon:cpu/", "hwmon:cpu/../x", "hwmon:cpu/.."})
        EXPECT_NE(complaintOf(sysfs, device).find("(expected "), std::string::npos) << device;
}
