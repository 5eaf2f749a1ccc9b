#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <regex>

#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "HostedBoard.h"

using nlohmann::json;
using support::expectTranscript;
using support::Outcome;
using support::Program;
using support::TempDir;

using support::HostedBoard;

TEST_F(HostedBoard, PrintsItsDevicesItsReportAndItsServices) {
    expectTranscript(m_dir, R"sh(
$ boardctl --board board.toml run --for 0 2>&1 | sed "/^ /d; s=$PWD/==" | steady
simulated board board.toml
fan 'fan': connected to 'kernel.fan', Main fan, device file dev/fan
thermal 'thermal': connected to 'kernel.thermal', Board sensor, device file dev/temperature
power 'power': connected to 'kernel.power', Supply, device file dev/power
led 'status': connected to 'kernel.status', Status LED, device file dev/status
descriptor: 7 tags
firmware: 5.2-dev/1234
leds: commands are read from /tmp/evt.fifo, which its owner alone may write
button: watching dev/button
status: 'boardctl status' is answered on sim/host.socket
ready
stopped
$ boardctl --board board.toml run --for 0 --format json 2>&1 | steady | sed -n "s=$PWD/==; 2p;6p;8p;/firmware/,$ p"
{"event":"connected","kind":"fan","name":"fan","endpoint":"kernel.fan","device":"dev/fan","description":"Main fan","simulated":true}
{"event":"descriptor","tags":7,"simulated":true}
{"event":"row","level":1,"key":"Description","value":"Main fan","simulated":true}
{"event":"firmware","version":"5.2-dev/1234","line1":"5.2","line2":"Branch","line3":"1234","line6":"board","line7":"dev","line8":"simulated","simulated":true}
{"event":"leds","pipe":"/tmp/evt.fifo","writers":"its owner alone","simulated":true}
{"event":"button","device":"dev/button","simulated":true}
{"event":"status","socket":"sim/host.socket","simulated":true}
{"event":"ready","simulated":true}
{"event":"stopped","simulated":true}
$ boardctl --board board.toml sim press
! boardctl: board.toml:40: button.device: dev/button: nobody watches the button (start `boardctl run` on this board)
[1]
)sh");
}

TEST_F(HostedBoard, ShowsItsPanelOnATerminal) {
    expectTranscript(m_dir, R"sh(
$ TERM=xterm NO_COLOR=1 script -qec "stty cols 60; $0 --board board.toml run --panel --for 0" log </dev/null | tr -d '\r' | sed -n 's/.\[K/CLEAR /gp' | sed 's/\[[?#]\]/[ ]/g'
CLEAR [ ] power  [ ] line  [ ] alarm  [ ] bar1  [ ] bar2 ...CLEAR stopped
)sh");
}

TEST_F(HostedBoard, GoesOnWithoutWhatFails) {
    expectTranscript(m_dir, R"sh(
$ rm board.toml; printf 1 >supply
$ printf "[[fan]]\nname='fan'\ndevice='gone'\nmaximum=1\n[[power]]\nname='L\303\274'\ndevice='supply'\n" >board.toml
$ printf "description=\"x\\\\u001b[31m\\\\n\"\n[descriptor]\ndevice='.'\n[button]\ndevice='board.toml'\n" >>board.toml
$ printf "[leds]\n[[leds.file]]\nmask=1\npath='led:none at all'\n[[leds.file]]\nmask=2\npath='dark'\n" >>board.toml
$ printf "[firmware]\ninfo='.'\n[preferences]\nfile='.'\n[voip]\n" >>board.toml
$ boardctl --board board.toml run --for 0 2>messages | sed -n 2p; steady <messages
power 'Lü': connected to 'kernel.Lü', x\x1b[31m\x0a, device file supply
boardctl: preferences: board.toml:23: preferences.file: .: is not a file (expected lines 'key = value')
boardctl: TIME fan 'fan' can't be used: board.toml:3: fan[0].device: gone: can't open: No such file or directory
boardctl: TIME descriptor can't be used: board.toml:10: descriptor.device: .: is not a device file (expected a file or a block device)
boardctl: firmware: board.toml:21: firmware.info: .: is not a file (expected text lines)
boardctl: button: board.toml:12: button.device: board.toml: is not a button (expected a pipe or a character device)
boardctl: TIME unable to open file /sys/class/leds/none at all/brightness
boardctl: TIME unable to open file dark
boardctl: TIME LED 'none at all' is gone: board.toml:16: leds.file[0].path: led:none at all: there is no LED 'none at all' (there are: ...)
boardctl: TIME LED 'dark' is gone: dark: can't open for writing: No such file or directory
$ boardctl --board board.toml run --for 0 --format json 2>log | grep -e 'fault.*[0-9]:' -e gone | steady | cut -d : -f 2-4 | cut -c 1-40
"fault","kind":"preferences","name":"pre
"device-gone","time":"TIME","kind":"fan"
"device-gone","time":"TIME","kind":"desc
"fault","kind":"firmware","error":"board
"fault","kind":"button","error":"board.t
"fault","time":"TIME","error":"unable to
"fault","time":"TIME","error":"unable to
"led-gone","time":"TIME","name":"none at
"led-gone","time":"TIME","name":"dark","
$ boardctl --board board.toml info >log
! boardctl: preferences: board.toml:23: preferences.file: .: is not a file (expected lines 'key = value')
! boardctl: driver 'fan': board.toml:3: fan[0].device: gone: can't open: No such file or directory
! boardctl: driver 'board-descr-driver': board.toml:10: descriptor.device: .: is not a device file (expected a file or a block device)
! boardctl: board.toml:21: firmware.info: .: is not a file (expected text lines)
[1]
$ json --board board.toml info 2>messages | sed 's/"since_boot": [0-9]*/"since_boot": N/; s/ { "name"/\n&/g'
{ "drivers": [
 { "name": "fan", "rows": [ { "level": 0, "index": 0, "key": "fan", "value": "" } ], "error": "board.toml:3: fan[0].device: gone: can't open: No such file or directory" },
 { "name": "Lü", "rows": [ { "level": 0, "index": 0, "key": "Lü", "value": "" } ] },
 { "name": "board-descr-driver", "rows": [ { "level": 0, "index": 0, "key": "Board Descriptor", "value": "" } ], "error": "board.toml:10: descriptor.device: .: is not a device file (expected a file or a block device)" },
 { "name": "resource-driver", "rows": [ { "level": 0, "index": 0, "key": "VoIP Resource", "value": "" }, { "level": 1, "index": 0, "key": "SIP Legs", "value": "0" }, { "level": 1, "index": 0, "key": "Border Controller", "value": "no" } ] } ], "fans": [
 { "name": "fan", "description": "", "speed": null, "error": "board.toml:3: fan[0].device: gone: can't open: No such file or directory" } ], "temperatures": [], "power": [
 { "name": "Lü", "description": "x\u001b[31m\n", "status": 1 } ], "leds": [], "capacity": { "dsp_channels": null, "sip_legs": 0, "error": "the board does not state how many DSP channels it has" }, "cpu": { "since_boot": N }, "firmware": { "version": null, "error": "board.toml:21: firmware.info: .: is not a file (expected text lines)" } }
$ printf "[[thermal]]\nname='heat'\ndevice='heat'\nmaximum=85\ndescription='T'\n[[led]]\nname='lamp'\n" >bad.toml
$ printf "device='gone'\ndescription='S'\n[[power]]\nname='plain'\ndevice='supply'\n[voip]\n" >>bad.toml; echo N/A >heat
$ boardctl --board bad.toml info 2>messages | sed '/^CPU/,$d'; cat messages
heat
  Description        T
  Maximum            85
plain
  Status             1
lamp
  Description        S
VoIP Resource
  Border Controller  no
boardctl: driver 'heat': heat: holds 'N/A' (expected a number of thousandths of a degree)
boardctl: driver 'lamp': bad.toml:8: led[0].device: gone: can't open: No such file or directory
boardctl: driver 'resource-driver': FAILED TO GET BOARD-DESCRIPTOR-DRIVER INTERFACE
$ boardctl --board bad.toml info --format metrics | grep -v -e '#' -e cpu; boardctl --board bad.toml run --for 0 2>messages | grep plain
board_device_up{kind="thermal",device="heat"} 0
board_device_up{kind="power",device="plain"} 1
board_device_up{kind="led",device="lamp"} 0
board_device_up{kind="voip",device="resource-driver"} 0
board_temperature_max_celsius{name="heat"} 85
board_power_status{name="plain"} 1
power 'plain': connected to 'kernel.plain', device file supply
  plain
$ for i in 'button watch' 'button bridge board.toml'; do boardctl --board board.toml $i; done
! boardctl: board.toml:12: button.device: board.toml: is not a button (expected a pipe or a character device)
! boardctl: board.toml: is not an input device (expected one such as /dev/input/event0)
[1]
$ printf "[button]\ndevice='/dev/null'\n" >null.toml; boardctl --board null.toml button watch 2>&1 | steady
boardctl: watching /dev/null until SIGINT (Ctrl-C)
boardctl: TIME button: /dev/null returned no message (expected a device that waits for the button) and is no longer watched
)sh");
}

TEST_F(HostedBoard, PlaysTheTourToItsEnd) {
    expectTranscript(m_dir, R"sh(
$ boardctl run --sim --tour 2>&1 | steady >log; grep -a -e '^-- ' -e '^fan.*set' -e '^temp' log
-- The tour: every part of the board in about ten seconds.
-- The VoIP capacity was read from the board descriptor: 120 DSP channels, 240 SIP legs.
-- The fan 'fan' is set and read back through its driver.
fan 'fan': set to low, the device file holds 85, reads back low
fan 'fan': set to high, the device file holds 170, reads back high
fan 'fan': set to full, the device file holds 255, reads back full
fan 'fan': set to off, the device file holds 0, reads back off
-- The temperature rises: the simulated sensor's file changes, the driver reads it.
temperature 'thermal': 45.000 degrees Celsius, maximum 85
temperature 'thermal': 52.500 degrees Celsius, maximum 85
temperature 'thermal': 41.500 degrees Celsius, maximum 85
-- A line in the pipe /tmp/evt.fifo rolls a light over four LEDs.
-- The line rings: its LED blinks for three seconds and then stops on its own.
-- An alarm flashes for one tick.
-- All LEDs light up for a second; their former patterns continue underneath.
-- The rolling light stops.
-- The power LED stops blinking: a command replaces the previous one of its group.
-- The service button is pressed for half a second.
-- That was the tour.
$ grep 'LED command' log | cut -d ' ' -f 4-; grep 'button \(pressed\|released\)' log | cut -c 1-21
search start
line ring
alarm once
lamp test
search stop
system ready
TIME button pressed
TIME button released,
$ head -n 2 sim/board.toml >less.toml; boardctl --board less.toml run --tour | grep -e --
-- The tour: every part of the board in about ten seconds.
-- That was the tour.
$ printf "[[fan]]\nname='fan'\ndevice='speed'\nmaximum=255\nenable='mode'\n" >real.toml; echo 130 >speed; echo 2 >mode
$ boardctl --board real.toml run --tour </dev/null >log; cat speed mode
130
2
! boardctl: real.toml: the tour sets fans of a real board, and standard input is not a terminal to ask on (expected -y)
$ boardctl --board real.toml run --tour -y | grep ': set'; cat speed mode
fan 'fan': set to low, reads back low
fan 'fan': set to high, reads back high
fan 'fan': set to full, reads back full
fan 'fan': set to high, reads back high
130
2
)sh");
}

TEST_F(HostedBoard, PlaysLinesOfOtherProcessesAndReportsItsButton) {
    // Without a terminal, each change of an LED prints a line. SIGHUP is ignored, as under nohup.
    Program run({"/bin/sh", "-c", "trap '' HUP; exec \"$@\"", "sh", BOARDCTL, "--board",
                 m_dir.path("sim/board.toml"), "run", "--panel"});
    ASSERT_TRUE(run.waitForOutput("ready\n"));
    expectTranscript(m_dir, "\n$ boardctl leds send line call\n");
    ASSERT_TRUE(run.waitForOutput("LED 'line' on"));
    EXPECT_EQ(m_dir.read("sim/leds/line.state"), "1");

    // Any program may write into the pipe. Whatever it writes, a line after a newline still works.
    // Several programs press the button at once: no press is lost or confused with another one.
    run.signal(SIGHUP); // is ignored
    expectTranscript(m_dir, R"sh(
$ printf 'x%.0s' `seq 300` >/tmp/evt.fifo; printf 'a\0b\n\377\n' >/tmp/evt.fifo; printf '\nline idle\n' >/tmp/evt.fifo
$ five() { for i in 1 2 3 4 5; do boardctl --board board.toml sim press --for 0 2>log; done; }; five & five & five & wait
$ boardctl --board board.toml button watch
! boardctl: board.toml:40: button.device: dev/button: another program watches this button
[1]
$ boardctl --board board.toml run --for 0 2>&1 | sed "s=$PWD/==" | grep -e another -e watching
boardctl: leds: leds/power: another program drives the LEDs of this board; they are left alone
boardctl: button: board.toml:40: button.device: dev/button: another program watches this button
boardctl: status: sim/host.socket: another program listens on this socket
$ boardctl run --sim --for 0 2>&1 | grep -e use
boardctl: leds: /tmp/evt.fifo: the pipe is in use: another LED service reads it; the LEDs run without commands
)sh");
    ASSERT_TRUE(run.waitForOutput("LED 'line' off"));
    run.end(SIGTERM);
    const Outcome outcome = run.finish();
    EXPECT_EQ(outcome.status, 0);
    const std::regex stamped(
        "[0-9-]{10}T[0-9:]{8}\\.[0-9]{3}[+-][0-9]{4} button (pressed|released, held [0-9.e-]+ s)");
    const std::sregex_iterator first(outcome.out.begin(), outcome.out.end(), stamped);
    EXPECT_EQ(std::distance(first, {}), 30) << outcome.out;
}

// The lines are so long that one read of the pipe does not hold two of them.
TEST_F(HostedBoard, ReadsEveryLineOfManySendersInTheOrderOfEachSender) {
    constexpr int SENDERS = TESTS_ARE_SLOW ? 5 : 20, LINES = 10;
    expectTranscript(m_dir, "\n$ sed -i 's/^tick_ms = .*/tick_ms = 1/' sim/board.toml\n");
    Program run(words({"run", "--format", "json"}));
    ASSERT_TRUE(run.waitForOutput("\"ready\""));
    expectTranscript(
        m_dir, "\n$ lines() { for j in `seq " + std::to_string(LINES) +
                   "`; do boardctl leds send a-line-of-some-forty-bytes-from-sender $1 $j; done; "
                   "}; for i in `seq " +
                   std::to_string(SENDERS) +
                   "`; do lines $i & done; wait; boardctl leds send no more\n");
    ASSERT_TRUE(run.waitForOutput("\"no more\""));
    run.end(SIGTERM);
    const std::string printed = run.finish().out;
    std::vector<int> next(SENDERS + 1, 1);
    const std::regex line("\"line\":\"a-line-of-some-forty-bytes-from-sender ([0-9]+) ([0-9]+)\"");
    for (std::sregex_iterator each(printed.begin(), printed.end(), line), end; each != end; ++each)
        EXPECT_EQ(std::stoi((*each)[2]), next.at(std::stoul((*each)[1]))++) << each->str();
    EXPECT_EQ(std::count(next.begin() + 1, next.end(), LINES + 1), SENDERS) << printed;
}

TEST_F(HostedBoard, EndsWhenAskedEvenIfNobodyReadsWhatItPrints) {
    const std::string sink = m_dir.path("sink");
    ASSERT_EQ(::mkfifo(sink.c_str(), 0600), 0);
    const int reader = ::open(sink.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GT(::fcntl(reader, F_SETPIPE_SZ, 4096), 0);
    Program run({"/bin/sh", "-c", "out=$1; shift; exec \"$@\" >\"$out\" 2>&1", "sh", sink, BOARDCTL,
                 "--board", m_dir.path("board.toml"), "run", "--format", "json"});
    pollfd first{reader, POLLIN, 0};
    ASSERT_EQ(::poll(&first, 1, -1), 1);
    run.signal(SIGHUP); // one signal must be enough
    EXPECT_EQ(run.finish().status, 0);
    ::close(reader);
}

TEST_F(HostedBoard, GoesOnWithoutAButtonThatDisappears) {
    Program run(words({"run", "--format", "json"}));
    ASSERT_TRUE(run.waitForOutput("\"ready\""));
    const int button = ::open(m_dir.path("sim/dev/button").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::write(button, "released", 8), 8); // of a press that nobody saw
    ASSERT_TRUE(run.waitForOutput("\"held_seconds\":null"));
    ::unlink(m_dir.path("sim/dev/button").c_str());
    ASSERT_EQ(::write(button, "pressed", 7),
              7); // ends the wait if the watcher has already opened the pipe again
    ASSERT_TRUE(run.waitForOutput("is no longer watched"));
    ::close(button);
    expectTranscript(m_dir, "\n$ boardctl leds send line call\n");
    ASSERT_TRUE(run.waitForOutput("\"line call\""));
    run.end(SIGINT);
    const Outcome outcome = run.finish();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.err.find("FAILED TO OPEN BUTTON FILE: "), std::string::npos) << outcome.err;
    std::istringstream lines(outcome.out);
    for (std::string line; std::getline(lines, line);)
        EXPECT_TRUE(json::accept(line)) << line;
}
