#include <filesystem>
#include <string>

#include "support/Transcript.h"

using support::expectTranscript;
using support::TempDir;

namespace {

/// Makes the sysfs of a machine with two chips of the same name, in the folder "sys".
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

TEST(Probe, ListsWhatTheKernelListsAndMakesAProfileThatPassesTheCheck) {
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
$ boardctl probe --sysfs sys --toml | tee board.toml
# The devices of this machine, as a board profile to start from. Choose the names by which
# programs find the devices, and add a `description` for people. What can't be used as it is
# found is a comment with the reason.

[[fan]]
name = "fan"
device = "hwmon:gpio_fan/pwm1"
maximum = 255
enable = "hwmon:gpio_fan/pwm1_enable"
tach = "hwmon:gpio_fan/fan1_input"

[[fan]]
name = "fan2"
device = "hwmon:nct@nct.656/pwm2"
maximum = 255
enable = "hwmon:nct@nct.656/pwm2_enable"
automatic = 5

[[thermal]]
name = "thermal"
device = "hwmon:nct@nct.656/temp1_input" # CPU \x1b[1m
maximum = 80 # temp1_crit

# Left out: no temp1_max or temp1_crit from 1 to 1000 degrees says how hot it may get
#[[thermal]]
#name = "thermal2"
#device = "hwmon:nct@nct.2592/temp1_input"
#maximum = ? # in degrees

[[led]]
name = "fan3"
device = "led:fan"
on = 255

[[led]]
name = "status"
device = "led:status"

# Left out: sys/bus/i2c/devices/1-0050/eeprom: at 0: CORRUPTED BOARD DESCRIPTOR: id=45 has invalid field length (chunkLen=1 is too small) at pos=2
#[descriptor]
#device = "sys/bus/i2c/devices/1-0050/eeprom"
#size = 16

[descriptor]
device = "sys/bus/i2c/devices/1-0051/eeprom"
size = 256

# Left out: a board has one descriptor; this is one more EEPROM
#[descriptor]
#device = "sys/bus/i2c/devices/1-0052/eeprom"
#size = 8

# Left out: it is a memory of the type 'OTP'
#[descriptor]
#device = "sys/bus/nvmem/devices/fuses0/nvmem"
#size = 16

# For a key as the board's button, start one of these before the host:
#     boardctl button bridge /dev/input/event2 --code N # gpio-keys, codes 2 to 4
#[button]
#device = "/run/board-button"
$ boardctl check --sysfs sys --board board.toml
board.toml: nothing wrong found
$ mkdir empty; boardctl probe --sysfs empty; json probe --sysfs empty
no hardware monitors, LEDs, EEPROMs or keys in empty
{ "monitors": [], "leds": [], "eeproms": [], "inputs": [] }
$ boardctl probe --sysfs empty --toml >none.toml; boardctl check --board none.toml
none.toml: nothing wrong found
$ boardctl probe --sysfs gone
! boardctl: gone: is not a folder (expected the root of sysfs)
[1]
$ wrong probe --toml --format json
boardctl: --toml and --format json are two formats (expected one of them)
)sh");
}

TEST(Check, ReportsEverythingAtOnceWithItsPlace) {
    expectTranscript(TempDir(), R"sh(
$ printf "[[fan]]\nname='a'\ndevice='level'\nmaximum=200\nenable='pipe'\ntach='gone'\n" >board.toml
$ printf "[[fan]]\nname='b'\ndevice='/proc/sys/kernel/cap_last_cap'\nmaximum=255\n" >>board.toml
$ printf "[[thermal]]\nname='c'\ndevice='heat'\nmaximum=85\n[[power]]\nname='d'\ndevice='.'\n" >>board.toml
$ printf "[[led]]\nname='e'\ndevice='led/brightness'\nbi_status=true\n[descriptor]\ndevice='eeprom'\n" >>board.toml
$ printf "[preferences]\nfile='prefs'\n[button]\ndevice='heat'\n[firmware]\ninfo='none'\n" >>board.toml
$ printf "[leds]\ngroup='no such'\n[[leds.file]]\nmask=1\npath='led:x'\n[[leds.file]]\nmask=0\npath='led/brightness'\non=255\n[watch]\non_clear='a b'\n" >>board.toml
$ echo 201 >level; mkfifo pipe; echo N/A >heat; mkdir led; echo 1 | tee led/max_brightness >led/brightness
$ printf '\000\055\000\001ab\000\000\000\004' >eeprom; printf 'voip.sip-legs = many\nnonsense\n' >prefs
$ boardctl check --board board.toml --sysfs .
error: board.toml:3: fan[0].device: level: holds '201' (expected 0 to 200)
error: board.toml:5: fan[0].enable: pipe: is not a device file (expected a file or a device)
error: board.toml:6: fan[0].tach: gone: can't open: No such file or directory
error: board.toml:9: fan[1].device: /proc/sys/kernel/cap_last_cap: can't open for writing: Permission denied
error: board.toml:13: thermal[0].device: heat: holds 'N/A' (expected a number of thousandths of a degree)
error: board.toml:17: power[0].device: .: is not a device file (expected a file or a device)
error: board.toml:20: led[0].device: `bi_status` needs a brightness of 2, but led/max_brightness holds 1
error: board.toml:23: descriptor.device: eeprom: at 0: CORRUPTED BOARD DESCRIPTOR: id=45 has invalid field length (chunkLen=1 is too small) at pos=2
warning: board.toml:25: preferences.file: prefs:2: 'nonsense' IS NOT A 'key = value' LINE
warning: board.toml:25: preferences.file: PREFERENCE 'voip.sip-legs': 'many' IGNORED, EXPECTED A NUMBER FROM 0 TO 4294967295
error: board.toml:27: button.device: heat: is not a button (expected a pipe or a character device)
error: board.toml:29: firmware.info: OPEN 'none' FAILED (none: can't open: No such file or directory)
error: board.toml:31: leds.group: this machine has no group 'no such', so no LED commands are taken
error: board.toml:34: leds.file[0].path: this LED is not driven: led:x: there is no LED 'x' (there are: none)
error: board.toml:37: leds.file[1].path: `on` is 255, but led/max_brightness holds 1: the LED is lit at 1
warning: board.toml:35: leds.file[1].mask: is 0: this LED is never lit
warning: board.toml:37: leds.file[1].path: is the device of [[led]] 'e' too: the sequencer overwrites what is set there
warning: board.toml:40: watch.on_clear: has no effect: no row of [leds] has this line
[3]
$ json check --board board.toml --sysfs . | head -c 200; echo
{ "board": "board.toml", "findings": [ { "place": "board.toml:3: fan[0].device", "what": "level: holds '201' (expected 0 to 200)", "level": "error" }, { "place": "board.toml:5: fan[0].enable", "what":
$ cat level heat prefs
201
N/A
voip.sip-legs = many
nonsense
$ printf '[[fan]]\nmaximum=1\n' >wrong.toml; boardctl check --board wrong.toml; json check --board wrong.toml
error: wrong.toml:1: fan[0].name: missing (expected in this table)
{ "board": "wrong.toml", "findings": [ { "place": "wrong.toml:1: fan[0].name", "what": "missing (expected in this table)", "level": "error" } ] }
[3]
$ printf 'x' >wrong.toml; boardctl check --board wrong.toml
error: wrong.toml:1: not TOML: Error while parsing key-value pair: encountered end-of-file
[3]
$ boardctl check --board gone.toml
! boardctl: gone.toml: can't open: No such file or directory
[1]
$ boardctl sim create sim >messages; boardctl check --board sim/board.toml
sim/board.toml: nothing wrong found
$ ln -s host.socket sim/host.socket; boardctl check --board sim/board.toml >found; status=$?; sed 's|: /.*/sim|: sim|' found; (exit $status)
warning: running host: can't ask a host of sim/board.toml: sim/host.socket: can't connect to the host: Too many levels of symbolic links
[3]
)sh");
}
