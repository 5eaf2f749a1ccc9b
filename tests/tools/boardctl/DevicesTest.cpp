#include <csignal>
#include <cstdlib>
#include <sched.h>

#include <fcntl.h>
#include <unistd.h>

#include "support/Program.h"
#include "support/Transcript.h"

using support::expectTranscript;
using support::replay;
using support::TempDir;

TEST(Devices, AreReadAndSetAndReportWhatTheyHold) {
    expectTranscript(TempDir(), R"sh(
$ printf "[[fan]]\nname='cpu'\ndevice='speed'\ndescription='Main'\nmaximum=255\nenable='mode'\ntach='tach'\n" >board.toml
$ printf "[[fan]]\nname='deaf'\ndevice='/dev/null'\nmaximum=255\n[[power]]\nname='supply'\ndevice='word'\n" >>board.toml
$ printf "[[thermal]]\nname='a'\ndevice='heat'\nmaximum=85\n[[thermal]]\nname='b'\ndevice='gone'\nmaximum=90\ndescription='B'\n" >>board.toml
$ printf 200 >speed; printf 5 >mode; printf -- -1 >word; printf '45123\n' >heat; printf 2340 >tach
$ boardctl --board board.toml fan --name cpu && cat mode && boardctl --board board.toml fan high --name cpu && echo `tr '\000' . <speed` `cat mode`
cpu: high, 2340 rpm
5cpu: high
170............. 1
$ rm tach; json fan --name cpu --board board.toml
[ { "name": "cpu", "description": "Main", "speed": "high", "rpm": null, "error": "board.toml:7: fan[0].tach: tach: can't open: No such file or directory" } ]
! boardctl: 'cpu': board.toml:7: fan[0].tach: tach: can't open: No such file or directory
[1]
$ echo 1200 >tach; json fan auto --name cpu --board board.toml && cat mode
[ { "name": "cpu", "description": "Main", "speed": "high" } ]
2
$ rm mode; boardctl fan low --name cpu --board board.toml; boardctl fan auto --name deaf --board board.toml
! boardctl: 'cpu': board.toml:6: fan[0].enable: mode: can't open: No such file or directory
! boardctl: 'deaf': the profile names no file that selects automatic control (expected the key enable)
[1]
$ json fan full --name deaf --board board.toml
[ { "name": "deaf", "description": "", "speed": null, "error": "/dev/null: holds nothing (expected a number from 0 to 255)" } ]
! boardctl: 'deaf': /dev/null: holds nothing (expected a number from 0 to 255)
[1]
$ wrong fan off --board board.toml
boardctl: the board has several fans: choose one with --name
$ boardctl fan --name deff --board board.toml
! boardctl: there is no fan 'deff' (there are: cpu, deaf); did you mean 'deaf'?
[1]
$ json temp --board board.toml
[ { "name": "a", "description": "", "celsius": 45.123, "maximum": 85 }, { "name": "b", "description": "B", "celsius": null, "error": "board.toml:21: thermal[1].device: gone: can't open: No such file or directory", "maximum": 90 } ]
! boardctl: 'b': board.toml:21: thermal[1].device: gone: can't open: No such file or directory
[1]
$ json power --board board.toml
[ { "name": "supply", "description": "", "status": null, "error": "word: holds '-1' (expected 0 to 9999)" } ]
! boardctl: 'supply': word: holds '-1' (expected 0 to 9999)
[1]
$ rm word; mkfifo word; boardctl --board board.toml power
! boardctl: 'supply': board.toml:14: power[0].device: word: is not a device file (expected a file or a device)
[1]
)sh");
}

TEST(Devices, GiveTheSystemsReasonForWhatTheyRefuse) {
    // A process may write these files about itself. The first accepts at most 1000. The second
    // replaces 0 by its default, which is another number.
    expectTranscript(TempDir(), R"sh(
$ printf "[[fan]]\nname='score'\ndevice='/proc/self/oom_score_adj'\nmaximum=3000\n" >board.toml
$ printf "[[fan]]\nname='slack'\ndevice='/proc/self/timerslack_ns'\nmaximum=60000\n" >>board.toml
$ printf "[[led]]\nname='score'\ndevice='/proc/self/oom_score_adj'\non=1001\nbi_status=true\n" >led.toml
$ boardctl --board board.toml fan full --name score; boardctl --board board.toml fan off --name slack
! boardctl: 'score': /proc/self/oom_score_adj: can't write: Invalid argument; the device holds off
! boardctl: 'slack': the device holds full after off was written
[1]
$ boardctl --board led.toml led score 1; boardctl --board led.toml led score blink 1 1
! boardctl: 'score': /proc/self/oom_score_adj: can't write: Invalid argument; the device holds 0
! boardctl: LED 'score': /proc/self/oom_score_adj: can't write: Invalid argument; the device holds 0
[1]
)sh");
}

TEST(Devices, LedIsSetOverlaidBlinkedAndRestored) {
    expectTranscript(TempDir(), R"sh(
$ boardctl sim create sim >messages; ln -s sim/dev .; ln -s sim/board.toml .
$ boardctl --board board.toml led status 1 >messages
$ json --board board.toml led status bi on --for 0
[ { "name": "status", "description": "Status LED", "state": 1, "simulated": true } ]
! boardctl: LED 'status' shows 2 until the time is up
$ boardctl --board board.toml led status blink 2 1; tr -d '\000' <dev/status; echo
status: 1
1
$ rm dev/status; json --board board.toml led status bi on; boardctl --board board.toml led status
{"error":"LED 'status': board.toml:23: led[0].device: dev/status: can't open: No such file or directory","simulated":true}
! boardctl: LED 'status': board.toml:23: led[0].device: dev/status: can't open: No such file or directory
! boardctl: 'status': board.toml:23: led[0].device: dev/status: can't open: No such file or directory
[1]
$ printf "[[led]]\nname='dim'\ndevice='dim'\non=255\n" >dim.toml; printf 77 >dim; echo 255 >max_brightness
$ boardctl --board dim.toml led dim; boardctl --board dim.toml led dim blink 1 1; tr -d '\000' <dim; echo
dim: 77
dim: 77
77
$ boardctl --board dim.toml led dim 1 && tr '\000' . <dim && echo && json --board dim.toml led dim
dim: 1
255.
[ { "name": "dim", "description": "", "state": 1 } ]
$ for i in 2 'bi on' 'bi off'; do boardctl --board dim.toml led dim $i; done; printf 256 >dim; boardctl --board dim.toml led dim
! boardctl: LED 'dim': has one lit state only (a second one needs bi_status = true in dim.toml)
! boardctl: LED 'dim': has one lit state only (a second one needs bi_status = true in dim.toml)
! boardctl: LED 'dim': has one lit state only (a second one needs bi_status = true in dim.toml)
! boardctl: 'dim': dim: holds '256' (expected 0 to 255)
[1]
)sh");
}

TEST(Devices, LedMayReadAsBeforeJustAfterAWrite) {
    // A terminal behaves like such an LED: it accepts what is written to it, and each read returns
    // one of the lines that the test wrote to its other end.
    const auto led = [](const std::string& action, const std::string& reads) {
        const int device = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        EXPECT_EQ(::grantpt(device) | ::unlockpt(device), 0);
        const std::string path = ::ptsname(device);
        const int held = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        const std::string lines = reads + "1\n1\n1\n1\n"; // one read too many must not wait
        EXPECT_EQ(::write(device, lines.data(), lines.size()), std::ptrdiff_t(lines.size()));
        const TempDir dir;
        dir.write("board.toml", "[[led]]\nname='slow'\nbi_status=true\ndevice='" + path + "'\n");
        const std::string result =
            replay(dir, "$ boardctl --board board.toml led slow " + action + " 2>messages");
        ::close(held);
        ::close(device);
        return result.substr(result.find(" 2>messages"));
    };
    // Each look at the LED reads two lines: one for the host and one for the driver.
    const std::string lit = "1\n1\n", second = "2\n2\n", dark = "0\n0\n";
    const std::string former = lit + "1\n"; // the driver reads once more to remember the state
    EXPECT_EQ(led("bi on --for 0", former + lit + second + second + second + lit),
              " 2>messages\nslow: 1\n");
    EXPECT_EQ(led("blink 1 2", former + lit + lit + dark + dark + dark + lit),
              " 2>messages\nslow: 1\n");
}

TEST(Devices, LedIsRestoredIfASignalEndsTheBlinking) {
    const TempDir dir;
    expectTranscript(dir, "\n$ boardctl sim create sim >messages\n");
    support::Program program({BOARDCTL, "--board", dir.path("sim/board.toml"), "led", "status",
                              "blink", "1000", "600000"});
    while (std::string(dir.read("sim/dev/status").c_str()) != "1")
        ::sched_yield();
    program.signal(SIGINT);
    EXPECT_EQ(program.finish().status, 128 + SIGINT);
    EXPECT_STREQ(dir.read("sim/dev/status").c_str(), "0");
}
