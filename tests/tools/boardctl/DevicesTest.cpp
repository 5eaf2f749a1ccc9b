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
$ printf "[[fan]]\nname='cpu'\ndevice='speed'\ndescription='Main'\nmaximum=255\nenable='manual'\n" >board.toml
$ printf "[[fan]]\nname='deaf'\ndevice='/dev/null'\nmaximum=255\n[[power]]\nname='supply'\ndevice='word'\n" >>board.toml
$ printf "[[thermal]]\nname='a'\ndevice='heat'\nmaximum=85\n[[thermal]]\nname='b'\ndevice='gone'\nmaximum=90\n" >>board.toml
$ printf 200 >speed; printf 0 >manual; printf -- -1 >word; printf '45123\n' >heat
$ boardctl --board board.toml fan high --name cpu && echo `tr '\000' . <speed` `cat manual`
cpu: high
170............. 1
$ json fan full --name deaf --board board.toml
[ { "name": "deaf", "description": "", "speed": null, "error": "the device holds off after full was written" } ]
! boardctl: 'deaf': the device holds off after full was written
[1]
$ wrong fan off --board board.toml
boardctl: the board has several fans: choose one with --name
$ boardctl fan --name deff --board board.toml
! boardctl: there is no fan 'deff' (there are: cpu, deaf); did you mean 'deaf'?
[1]
$ boardctl temp --board board.toml
a: 45.123 degrees Celsius, maximum 85
! boardctl: 'b': board.toml:20: thermal[1].device: gone: can't open: No such file or directory
[1]
$ json temp --board board.toml
[ { "name": "a", "description": "", "celsius": 45.123, "maximum": 85 }, { "name": "b", "description": "", "celsius": null, "error": "board.toml:20: thermal[1].device: gone: can't open: No such file or directory", "maximum": 0 } ]
! boardctl: 'b': board.toml:20: thermal[1].device: gone: can't open: No such file or directory
[1]
$ json power --board board.toml
[ { "name": "supply", "description": "", "status": 4294967295 } ]
$ rm manual; boardctl --board board.toml fan --name cpu
! boardctl: 'cpu': board.toml:6: fan[0].enable: manual: can't enable: No such file or directory
[1]
$ printf "[[fan]]\nname='f'\ndevice='speed'\nmaximum=1\nenable='pipe'\n" >pipe.toml; mkfifo pipe; boardctl --board pipe.toml fan
! boardctl: 'f': pipe.toml:5: fan[0].enable: pipe: is not a device file (expected a file or a device)
[1]
$ rm word; mkfifo word; boardctl --board board.toml power
! boardctl: 'supply': board.toml:13: power[0].device: word: is not a device file (expected a file or a device)
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
$ rm dev/status; ln -s /dev/null dev/status
$ boardctl --board board.toml led status bi on
! boardctl: LED 'status': the device holds 0 after 2 was written
[1]
$ boardctl --board board.toml led status blink 1 1
! boardctl: LED 'status': the device holds 0 after another state was written
[1]
$ rm dev/status; json --board board.toml led status bi on; boardctl --board board.toml led status
{"error":"LED 'status': board.toml:23: led[0].device: dev/status: can't open: No such file or directory","simulated":true}
! boardctl: LED 'status': board.toml:23: led[0].device: dev/status: can't open: No such file or directory
! boardctl: 'status': board.toml:23: led[0].device: dev/status: can't open: No such file or directory
[1]
$ printf "[[led]]\nname='plain'\ndevice='plain'\n" >plain.toml; printf 0 >plain
$ boardctl --board plain.toml led plain bi on
! boardctl: LED 'plain': can't show a second lit state
[1]
)sh");
}

TEST(Devices, LedMayReadAsBeforeJustAfterAWrite) {
    // A terminal is such an LED: it accepts what is written and reads, line by line, what a test
    // wrote to its other end.
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
    const std::string former = "1\n1\n"; // to remember it: for boardctl and for the driver
    EXPECT_EQ(led("bi on --for 0", former + "1\n2\n" + "2\n2\n1\n"), " 2>messages\nslow: 1\n");
    // A 0 takes three reads: the second is the host's look at the device, of one byte.
    const std::string dark = "0\n00\n";
    EXPECT_EQ(led("blink 1 2", former + "1\n" + "1\n" + dark + dark + dark + "1\n"),
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
