#include <filesystem>
#include <string>

#include "support/Transcript.h"

using support::expectTranscript;
using support::TempDir;

namespace {

/// The device tree of a machine with two chips of one name, in the folder "sys".
void makeTree(const TempDir& dir) {
    const std::pair<const char*, std::string> FILES[] = {
        {"class/hwmon/hwmon0/name", "gpio_fan\n"},
        {"class/hwmon/hwmon0/pwm1", "170\n"},
        {"class/hwmon/hwmon0/pwm1_enable", "1\n"},
        {"class/hwmon/hwmon0/fan1_input", "1200\n"},
        {"class/hwmon/hwmon2/name", "nct\n"},
        {"class/hwmon/hwmon2/temp1_input", "41500\n"},
        {"class/hwmon/hwmon2/temp1_label", "CPU \x1B[1m\n"},
        {"class/hwmon/hwmon2/temp1_max", "0\n"},
        {"class/hwmon/hwmon2/temp1_crit", "80900\n"},
        {"class/hwmon/hwmon2/in0_input", "N/A\n"},
        {"class/hwmon/hwmon2/pwm2", "90\n"},
        {"class/hwmon/hwmon2/pwm2_enable", "5\n"},
        {"class/hwmon/hwmon10/name", "nct\n"},
        {"class/hwmon/hwmon10/temp1_input", "-125\n"},
        {"class/hwmon/hwmon10/power1_average", "12500000\n"},
        {"class/leds/fan/brightness", "0\n"},
        {"class/leds/fan/max_brightness", "255\n"},
        {"class/leds/fan/trigger", "none [timer] default-on\n"},
        {"class/leds/status/brightness", "0\n"},
        {"class/leds/status/max_brightness", "1\n"},
        {"bus/i2c/devices/1-0050/eeprom", std::string("\0\x2D\0\1", 4) + std::string(12, 'x')},
        {"bus/i2c/devices/1-0051/eeprom", std::string(256, '\xFF')},
        {"bus/i2c/devices/1-0051/1-00510/nvmem", std::string(256, '\xFF')},
        {"bus/i2c/devices/1-0052/eeprom", std::string(8, '\xFF')},
        {"bus/nvmem/devices/fuses0/nvmem", std::string(16, '\1')},
        {"bus/nvmem/devices/fuses0/type", "OTP\n"},
        {"class/input/event2/device/name", "gpio-keys\n"},
        {"class/input/event2/device/capabilities/key", "1c\n"},
        {"class/input/event3/device/name", "Mouse wheel\n"},
        {"class/input/event3/device/capabilities/key", "0\n"},
    };
    for (const auto& [name, text] : FILES) {
        const std::filesystem::path path = std::string("sys/") + name;
        dir.makeFolder(path.parent_path().string());
        dir.write(path.string(), text);
    }
    const std::pair<const char*, const char*> LINKS[] = {
        {"sys/class/hwmon/hwmon0/device", "../../../devices/fan"},
        {"sys/class/hwmon/hwmon2/device", "../../../devices/nct.656"},
        {"sys/class/hwmon/hwmon10/device", "../../../devices/nct.2592"},
        {"sys/bus/nvmem/devices/1-00510", "../../i2c/devices/1-0051/1-00510"}};
    for (const auto& [link, target] : LINKS)
        std::filesystem::create_symlink(target, dir.path(link));
}

} // namespace

TEST(Probe, ListsWhatTheKernelListsWithNamesForAProfile) {
    const TempDir dir;
    makeTree(dir);
    expectTranscript(dir, R"sh(
$ boardctl probe --sysfs sys
gpio_fan at fan
  hwmon:gpio_fan/fan1_input           1200 rpm
  hwmon:gpio_fan/pwm1                 170 of 255, mode 1 (manual)
nct at nct.656
  hwmon:nct@nct.656/in0_input         no value: sys/class/hwmon/hwmon2/in0_input: holds 'N/A' (expected a number)
  hwmon:nct@nct.656/temp1_input       CPU \x1b[1m: 41.500 C (max 0.000, crit 80.900)
  hwmon:nct@nct.656/pwm2              90 of 255, mode 5 (automatic)
nct at nct.2592
  hwmon:nct@nct.2592/power1_average   12.500000 W
  hwmon:nct@nct.2592/temp1_input      -0.125 C
LEDs
  led:fan                             0 of 255, trigger timer
  led:status                          0 of 1
EEPROMs
  sys/bus/i2c/devices/1-0050/eeprom   16 bytes
  sys/bus/i2c/devices/1-0051/eeprom   256 bytes
  sys/bus/i2c/devices/1-0052/eeprom   8 bytes
  sys/bus/nvmem/devices/fuses0/nvmem  16 bytes, OTP
Keys
  /dev/input/event2                   gpio-keys: codes 2 to 4
$ json probe --sysfs sys
{ "monitors": [ { "name": "gpio_fan", "bus_device": "fan", "folder": "sys/class/hwmon/hwmon0", "sensors": [ { "device": "hwmon:gpio_fan/fan1_input", "label": "", "value": 1200, "unit": "rpm", "limits": {} } ], "pwms": [ { "device": "hwmon:gpio_fan/pwm1", "value": 170, "enable": "hwmon:gpio_fan/pwm1_enable", "mode": 1, "tach": "hwmon:gpio_fan/fan1_input" } ] }, { "name": "nct", "bus_device": "nct.656", "folder": "sys/class/hwmon/hwmon2", "sensors": [ { "device": "hwmon:nct@nct.656/in0_input", "label": "", "value": null, "error": "sys/class/hwmon/hwmon2/in0_input: holds 'N/A' (expected a number)", "unit": "V", "limits": {} }, { "device": "hwmon:nct@nct.656/temp1_input", "label": "CPU \u001b[1m", "value": 41.5, "unit": "C", "limits": { "max": 0.0, "crit": 80.9 } } ], "pwms": [ { "device": "hwmon:nct@nct.656/pwm2", "value": 90, "enable": "hwmon:nct@nct.656/pwm2_enable", "mode": 5 } ] }, { "name": "nct", "bus_device": "nct.2592", "folder": "sys/class/hwmon/hwmon10", "sensors": [ { "device": "hwmon:nct@nct.2592/power1_average", "label": "", "value": 12.5, "unit": "W", "limits": {} }, { "device": "hwmon:nct@nct.2592/temp1_input", "label": "", "value": -0.125, "unit": "C", "limits": {} } ], "pwms": [] } ], "leds": [ { "device": "led:fan", "brightness": 0, "maximum": 255, "trigger": "timer" }, { "device": "led:status", "brightness": 0, "maximum": 1, "trigger": "" } ], "eeproms": [ { "device": "sys/bus/i2c/devices/1-0050/eeprom", "size": 16, "type": "EEPROM" }, { "device": "sys/bus/i2c/devices/1-0051/eeprom", "size": 256, "type": "EEPROM" }, { "device": "sys/bus/i2c/devices/1-0052/eeprom", "size": 8, "type": "EEPROM" }, { "device": "sys/bus/nvmem/devices/fuses0/nvmem", "size": 16, "type": "OTP" } ], "inputs": [ { "device": "/dev/input/event2", "name": "gpio-keys", "codes": [ 2, 3, 4 ] } ] }
$ mkdir empty; boardctl probe --sysfs empty; json probe --sysfs empty
no hardware monitors, LEDs, EEPROMs or keys in empty
{ "monitors": [], "leds": [], "eeproms": [], "inputs": [] }
$ boardctl probe --sysfs gone
! boardctl: gone: is not a folder (expected the kernel's device tree)
[1]
)sh");
}
