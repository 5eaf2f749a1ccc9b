#include "sysfs/DeviceLocator.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "support/Failure.h"
#include "support/TempDir.h"

using support::TempDir;

namespace {

/// Makes two monitors of the same name, one without a bus device, and one with files and labels.
void makeMonitors(const TempDir& sysfs) {
    const struct {
        const char *folder, *name, *device;
    } table[] = {{"hwmon0", "cpu", "../../0-0048"},
                 {"hwmon1", "cpu", "../../0-0049"},
                 {"hwmon7", "tmp105", ""},
                 {"hwmon10", "nct", "../../nct.656"}};
    for (const auto& row : table) {
        const std::string folder = std::string("class/hwmon/") + row.folder;
        sysfs.makeFolder(folder);
        sysfs.write(folder + "/name", row.name + std::string("\n"));
        sysfs.write(folder + "/pwm1", "0\n");
        if (*row.device != '\0')
            std::filesystem::create_symlink(row.device, sysfs.path(folder + "/device"));
    }
    const std::pair<const char*, const char*> FILES[] = {
        {"temp1_label", "CPUTIN \n"}, {"temp1_input", ""},
        {"temp2_label", "5V/12V\n"},  {"temp2_input", ""},
        {"in3_label", "AUX"},         {"in3_input", ""},
        {"in4_label", "AUX"},         {"in4_input", ""},
        {"in5_label", "pwm1"},        {"in5_input", ""},
        {"in6_label", "LOST"}};
    for (const auto& [name, text] : FILES)
        sysfs.write(std::string("class/hwmon/hwmon10/") + name, text);
}

} // namespace

TEST(DeviceLocator, FindsMonitorsAndLedsByNameOrListsWhatIsThere) {
    const TempDir sysfs;
    sysfs.makeFolder("class/leds/alarm");
    makeMonitors(sysfs);
    const std::string monitors = sysfs.path("./class/hwmon/");
    const std::string present = "(expected one; there are: 'cpu@0-0048', 'cpu@0-0049', 'tmp105', "
                                "'nct@nct.656')";
    const std::string files = "(there are: in3_input, in3_label, in4_input, in4_label, in5_input, "
                              "in5_label, in6_label, pwm1, temp1_input, temp1_label, temp2_input, "
                              "temp2_label)";
    const std::string noFile = " is not a hardware monitor's file (expected hwmon:NAME/FILE)";
    const std::string noLed = " is not an LED's name (expected led:NAME)";
    const std::pair<std::string, std::string> CASES[] = {
        {"hwmon:tmp105/pwm1", monitors + "hwmon7/pwm1"},
        {"hwmon:cpu@0-0049/pwm1", monitors + "hwmon1/pwm1"},
        {"hwmon:nct/CPUTIN", monitors + "hwmon10/temp1_input"},
        {"hwmon:nct@nct.656/5V/12V", monitors + "hwmon10/temp2_input"},
        {"hwmon:nct/pwm1", monitors + "hwmon10/pwm1"}, // a file takes precedence over a label
        {"led:alarm", sysfs.path("./class/leds/alarm/brightness")},
        {"/dev/fan:hwmon:x", "/dev/fan:hwmon:x"},
        {"led:alram",
         "led:alram: there is no LED 'alram' (there are: 'alarm'); did you mean 'alarm'?"},
        {"hwmon:tmp15/x",
         "hwmon:tmp15/x: no monitor is named 'tmp15' " + present + "; did you mean 'tmp105'?"},
        {"hwmon:cpu@0-0050/x", "hwmon:cpu@0-0050/x: no monitor is named 'cpu@0-0050' " + present +
                                   "; did you mean 'cpu@0-0048'?"},
        {"hwmon:cpu/x", "hwmon:cpu/x: more than one monitor is named 'cpu' (expected "
                        "hwmon:cpu@0-0048/x or hwmon:cpu@0-0049/x)"},
        {"hwmon:nct/pmw1", "hwmon:nct/pmw1: 'nct@nct.656' has no file and no label 'pmw1' " +
                               files + "; did you mean 'pwm1'?"},
        {"hwmon:nct/LOST",
         "hwmon:nct/LOST: 'nct@nct.656' has no file and no label 'LOST' " + files},
        {"hwmon:nct/AUX", "hwmon:nct/AUX: 'nct@nct.656' has more than one label 'AUX' (expected "
                          "one of the files in3_input, in4_input)"},
        {"hwmon:nct/../hwmon7/pwm1", "hwmon:nct/../hwmon7/pwm1: 'nct@nct.656' has no file and no "
                                     "label '../hwmon7/pwm1' " +
                                         files},
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

TEST(DeviceLocator, ReadsTheMonitorsOnceOrForEachName) {
    const TempDir sysfs;
    makeMonitors(sysfs);
    const board::DeviceLocator always(sysfs.path(".")), once = always.readingOnce();
    const std::string device = "hwmon:tmp105/pwm1", before = once.locate(device);
    EXPECT_EQ(always.locate(device), before);
    std::filesystem::rename(sysfs.path("class/hwmon/hwmon7"), sysfs.path("class/hwmon/hwmon8"));
    sysfs.makeFolder("class/hwmon/hwmon7");
    sysfs.write("class/hwmon/hwmon7/pwm1", "");
    EXPECT_EQ(once.locate(device), before);
    EXPECT_EQ(always.locate(device), sysfs.path("./class/hwmon/hwmon8/pwm1"));
    EXPECT_EQ(always.readingOnce().locate(device), always.locate(device));
}
