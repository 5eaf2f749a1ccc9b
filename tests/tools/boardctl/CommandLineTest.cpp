#include <csignal>
#include <sched.h>
#include <sys/ioctl.h>

#include <fcntl.h>
#include <unistd.h>

#include "support/Transcript.h"

using support::expectTranscript;
using support::TempDir;

TEST(CommandLine, PrintsHelpThatFitsATerminal) {
    expectTranscript(TempDir(), R"sh(
$ boardctl bd set --help | sed -n '2,7p'
Usage: boardctl bd set [OPTIONS] ASSIGNMENT...

Positionals:
  ASSIGNMENT ID=TYPE:VALUE ... REQUIRED
                              TYPE is u8, u16, u32, uint (4 bytes), text, hex
                              or mac (ADDRESS/INTERFACE). Several assignments
$ for i in run info 'leds preview' 'button bridge' 'bd build'; do boardctl $i --help | grep -e ^Usage -e '.\{80\}'; done
Usage: boardctl run [OPTIONS]
Usage: boardctl info [OPTIONS]
Usage: boardctl leds preview [OPTIONS]
Usage: boardctl button bridge [OPTIONS] EVENT_DEVICE
Usage: boardctl bd build [OPTIONS] TAGS [ASSIGNMENT...]
)sh");
}

TEST(CommandLine, RejectsAWrongCallWithItsReasonAndTheNearestWord) {
    expectTranscript(TempDir(), R"sh(
$ boardctl fan hihg
! boardctl: SPEED: 'hihg' (expected full, high, low, off or auto); did you mean 'high'?
!
! Usage: boardctl fan [OPTIONS] [SPEED]
! For details run `boardctl fan --help`.
[2]
$ for i in fna help 'bd mac lst' 'fan full low' 'bd mac get 0 x' 'bd show -i a x'; do wrong $i; done
boardctl: there is no command 'fna'; did you mean 'fan'?
boardctl: there is no command 'help'; did you mean '--help'?
boardctl: there is no command 'lst'; did you mean 'list'?
boardctl: unexpected word 'low'
boardctl: unexpected word 'x' (use -i to name an image file)
boardctl: unexpected word 'x' (-i names the image already)
$ for i in 'fna --help' 'cpu x --help' 'bd get --nosuch --help' 'bd show x -i a'; do wrong $i; done
boardctl: there is no command 'fna'; did you mean 'fan'?
boardctl: unexpected word 'x'
boardctl: there is no option '--nosuch'
boardctl: --image: is given more than once
$ for i in '--formt=json info' 'fan --nmae x' 'leds send -a b' 'info --board'; do wrong $i; done
boardctl: there is no option '--formt'; did you mean '--format'?
boardctl: there is no option '--nmae'; did you mean '--name'?
boardctl: there is no option '-a' (put -- before words that begin with a dash)
boardctl: --board: the value is missing
$ >journal; JOURNAL_STREAM=`stat -c %d:%i journal` boardctl nosuch 2>journal; head -1 journal; JOURNAL_STREAM=1:2 wrong nosuch
<3>boardctl: there is no command 'nosuch'
boardctl: there is no command 'nosuch'
$ wrong --board '' info
boardctl: --board: is empty
$ for i in 'info --format xml' 'fan --format metrics' 'leds check --format svg'; do wrong $i; done
boardctl: --format: 'xml' (expected text, json, metrics, svg or html)
boardctl: --format metrics works only with info and status
boardctl: --format svg works only with leds preview
$ for i in 'run --for nan' 'cpu --period 0.09' 'cpu --count 0'; do wrong $i; done
boardctl: --for: 'nan' (expected seconds, 0 to 31622400)
boardctl: --period: '0.09' (expected seconds, 0.1 to 86400)
boardctl: --count: '0' (expected 1 to 1000000000)
$ wrong button bridge /dev/null --code 768
boardctl: --code: '768' (expected 0 to 767)
$ for i in 'blnk 1 1' 'blink 2' 'bi of' 3 'blink 0 1' 'blink 2 3600001' '1 --for 1'; do wrong led status $i; done
boardctl: 'blnk' is not an action (expected 0, 1, 2, 'bi on', 'bi off' or 'blink COUNT PERIOD_MS'); did you mean 'blink'?
boardctl: blink needs COUNT and PERIOD_MS, such as: blink 3 500
boardctl: bi needs on or off; did you mean 'off'?
boardctl: the state is '3' (expected 0 to 2)
boardctl: COUNT is '0' (expected 1 to 1000000)
boardctl: PERIOD_MS is '3600001' (expected 1 to 3600000)
boardctl: --for works only with 'bi on'
$ wrong leds preview --ticks 0
boardctl: --ticks: '0' (expected 1 to 1000000)
$ for i in '0 a b' 1000001 "`printf '1 a\nb'`" "1 `printf '%080d' 0`"; do wrong leds preview --at "$i"; done
boardctl: --at: '0 a b' (expected "TICK LINE" with a tick of 1 to 1000000, such as "1 system ready", or "TIME LINE", such as "2.5s system ready")
boardctl: --at: '1000001' (expected "TICK LINE" with a tick of 1 to 1000000, such as "1 system ready", or "TIME LINE", such as "2.5s system ready")
boardctl: --at: '1 a\x0ab' (expected one line; use one --at for each)
boardctl: --at: '1 00000000000000000000000000000000000000000000000000000000000000000000000000000000' (expected a line of at most 79 bytes: a board cuts longer ones in two)
$ for i in '--speed 2' '--play --speed 0' '--play --format svg' '--for 0' '--for 1 --ticks 1' '--script=' '--format html --ticks 20001'; do wrong --sim leds preview $i; done
boardctl: --speed works only with --play
boardctl: --speed: '0' (expected a number, 0.01 to 1000)
boardctl: --play prints text (expected no --format)
boardctl: --for: 0 seconds are 0 ticks of 100 ms (expected 1 to 1000000)
boardctl: --ticks excludes --for
boardctl: --script: the value is missing
boardctl: --format html: 20001 ticks (expected at most 20000: a browser can't hold more)
$ wrong leds send a ''
boardctl: an empty word can't be sent
$ for i in 'a b 0x10' "`printf '%070d' 0` b -12345678"; do wrong leds send $i; done
boardctl: NUMBER: '0x10' (expected -2147483648 to 2147483647)
boardctl: the line has 82 bytes (expected at most 79)
)sh");
}

TEST(CommandLine, RejectsTagsAndValuesThatMakeNoSense) {
    expectTranscript(TempDir(), R"sh(
$ for i in 45 45=i8:1 45=u23:1 45.x=u8:1 1=02:00:00:00:00:07; do wrong bd set $i; done
boardctl: '45' is not an assignment (expected ID=TYPE:VALUE, such as ProductID=hex:1234abcd)
boardctl: tag '45': type 'i8' is unknown (expected u8, u16, u32, uint, text, hex or mac)
boardctl: tag '45': type 'u23' is unknown (expected u8, u16, u32, uint, text, hex or mac); did you mean 'u32'?
boardctl: occurrence 'x' is not a number from 0 to 65535 (expected decimal digits, or hexadecimal ones with 0x)
boardctl: tag '1': type '02' is unknown (expected u8, u16, u32, uint, text, hex or mac); an address is written as MacAddress=mac:02:00:00:00:00:07/3
$ for i in u8:256 u16:65536 u32:4294967296 uint: u8:0x hex:123 hex:g1; do wrong bd set 45=$i | sed 's/ (.*//'; done
boardctl: tag '45': u8 value '256' is not a number from 0 to 255
boardctl: tag '45': u16 value '65536' is not a number from 0 to 65535
boardctl: tag '45': 32-bit value '4294967296' is not a number from 0 to 4294967295
boardctl: tag '45': 32-bit value '' is not a number from 0 to 4294967295
boardctl: tag '45': u8 value '0x' is not a number from 0 to 255
boardctl: tag '45': '123' is not hexadecimal at character 3
boardctl: tag '45': 'g1' is not hexadecimal at character 0
$ wrong bd set 45=text:`head -c 65531 /dev/zero | tr '\000' x`
boardctl: tag '45': 65531 bytes are too long for a chunk (expected at most 65530)
$ for i in 02:00:00:00:00:07 02:00:00:00:00/1 02:00:00:00:00:07/65536; do wrong bd put 1=mac:$i | sed 's/ (.*//'; done
boardctl: tag '1': '02:00:00:00:00:07' has no interface number
boardctl: tag '1': '02:00:00:00:00' is not a MAC address
boardctl: tag '1': interface number '65536' is not a number from 0 to 65535
$ wrong bd set 45=u8:1 45.0=u8:2
boardctl: tag 45.0 is assigned twice
$ wrong bd put 1=mac:02:00:00:00:00:07/3 1=hex:0200000000080003
boardctl: the address of interface 3 is assigned twice
$ for i in 'set 45=u8:1 -i -' 'build - -o - --format json'; do wrong bd $i; done
boardctl: -i -: standard input can't be edited (expected an image file)
boardctl: -o - writes the image to standard output, so it excludes --format json
$ for i in 65535=text: 9.0=u8:1; do wrong bd add $i; done
boardctl: '65535' is not a tag (expected 1 to 65534, 0x1 to 0xfffe, or a name such as ProductID)
boardctl: a new tag has a position in the list, not an occurrence (expected ID=TYPE:VALUE)
$ wrong bd insert 65537 9=u8:1
boardctl: position '65537' is not a number from 0 to 65536 (expected decimal digits, or hexadecimal ones with 0x)
$ for i in Tag45 0 Produktid `printf '\033%040d' 0`; do wrong bd get $i; done
boardctl: 'Tag45' is not a tag (expected 1 to 65534, 0x1 to 0xfffe, or a name such as ProductID)
boardctl: '0' is not a tag (expected 1 to 65534, 0x1 to 0xfffe, or a name such as ProductID)
boardctl: 'Produktid' is not a tag (expected 1 to 65534, 0x1 to 0xfffe, or a name such as ProductID); did you mean 'ProductID'?
boardctl: '\x1b000000000000000000000000000000000000000...' is not a tag (expected 1 to 65534, 0x1 to 0xfffe, or a name such as ProductID)
$ for i in 02:00:00:00:00:0 02:00:00:00:00:0g 03:00:5e:00:00:01; do wrong bd mac add $i; done
boardctl: '02:00:00:00:00:0' is not a MAC address (expected six groups of two hexadecimal digits, such as 02:00:00:00:00:07)
boardctl: '02:00:00:00:00:0g' is not a MAC address (expected six groups of two hexadecimal digits, such as 02:00:00:00:00:07)
boardctl: '03:00:5e:00:00:01' is a multicast or broadcast address (expected the address of one interface)
$ wrong bd mac add 00:00:00:00:00:00
boardctl: '00:00:00:00:00:00' is all zero (expected the address of an interface)
$ wrong bd mac set 0 02:00:00:00:00:07 65536
boardctl: interface number '65536' is not a number from 0 to 65535 (expected decimal digits, or hexadecimal ones with 0x)
)sh");
}

TEST(CommandLine, WorksOnTheBoardThatIsNamedAndMakesOneUpOnlyIfAsked) {
    expectTranscript(TempDir(), R"sh(
$ for i in 'info --format json' 'bd show' 'sim press'; do wrong $i; done
boardctl: no board is named (expected --board FILE, the variable BOARDCTL_BOARD, the file /etc/boarddrivers/board.toml, or --sim for a simulated board)
boardctl: no board is named (expected --board FILE, the variable BOARDCTL_BOARD, the file /etc/boarddrivers/board.toml, or --sim for a simulated board)
boardctl: no board is named (expected --board FILE, the variable BOARDCTL_BOARD, the file /etc/boarddrivers/board.toml, or --sim for a simulated board)
$ wrong --sim temp --board board.toml
boardctl: --board and --sim each choose a board (expected one of them)
$ printf "[[power]]\nname='supply'\ndevice='word'\n" >board.toml; printf 7 >word; boardctl sim create sim >messages
$ export BOARDCTL_BOARD=board.toml; json power; json --sim power; json power --board sim/board.toml
[ { "name": "supply", "description": "", "status": 7 } ]
[ { "name": "power", "description": "Supply", "status": 1, "simulated": true } ]
[ { "name": "power", "description": "Supply", "status": 1, "simulated": true } ]
$ export BOARDCTL_BOARD=; wrong power
boardctl: no board is named (expected --board FILE, the variable BOARDCTL_BOARD, the file /etc/boarddrivers/board.toml, or --sim for a simulated board)
$ json fan full --name x --board sim/board.toml 2>messages
{"error":"there is no fan 'x' (there are: fan)","simulated":true}
[1]
$ boardctl bd dump --sim | tee tags | sed -n 3p; boardctl bd build tags -o image && boardctl bd dump image | sed -n 3p
{"id":1,"name":"MacAddress","length":8,"data":"0200000000070000","simulated":true},
{"id":1,"name":"MacAddress","length":8,"data":"0200000000070000"},
)sh");
}

TEST(CommandLine, NamesWhatIsWrongWithABoardAndStartsNothing) {
    expectTranscript(TempDir(), R"sh(
$ printf "[[fan]]\nname='fan'\ndevice='speed'\nmaximum=255\nspeed=3\n" >board.toml
$ json fan --board board.toml 2>messages
{"error":"board.toml:5: fan[0].speed: unknown key (expected name, device, description, maximum, enable, manual, automatic, on_exit, tach)"}
[1]
$ boardctl sim create sim && boardctl sim create sim
created sim/board.toml; try: boardctl --board sim/board.toml info
! boardctl: sim: the folder is not empty (expected a new or empty one)
[1]
$ boardctl sim create board.toml
! boardctl: board.toml: is not a folder
[1]
$ boardctl --board sim info
! boardctl: sim: is not a file (expected a board profile); did you mean 'sim/board.toml'?
[1]
$ boardctl --sim fan --name "`printf 'a\nb\033'`"
! boardctl: there is no fan 'a\x0ab\x1b' (there are: fan)
[1]
$ printf '' >board.toml
$ for i in temp 'bd check' 'leds check' firmware 'sim press'; do boardctl --board board.toml $i; done
! boardctl: board.toml: the board has no thermal (expected a table [[thermal]])
! boardctl: board.toml: the board has no descriptor
! boardctl: board.toml: the board has no LED tables (expected a table [leds])
! boardctl: board.toml: the board has no firmware information (expected a table [firmware])
! boardctl: board.toml: the board has no button (expected a table [button])
[1]
$ boardctl --version | sed 's/[0-9.]*$/VERSION/'
boardctl VERSION
)sh");
}

TEST(CommandLine, FailsIfItsOutputIsNotAccepted) {
    expectTranscript(TempDir(), R"sh(
$ for i in 'info --sim' 'run --sim' 'fan --help' --version; do boardctl $i >/dev/full 2>messages; echo $? `head -n 1 messages`; done
1 boardctl: can't write to standard output: No space left on device
1 boardctl: can't write to standard output: No space left on device
1 boardctl: can't write to standard output: No space left on device
1 boardctl: can't write to standard output: No space left on device
$ for i in 1 2 3 4 5 6 7 8; do printf '\000\005\003\004'; head -c 768 /dev/zero; done >image; boardctl bd raw image >/dev/full
! boardctl: can't write to standard output: No space left on device
[1]
$ boardctl --version >&-; boardctl bd raw - <&-
! boardctl: can't write to standard output: Bad file descriptor
! boardctl: standard input: can't read: Bad file descriptor
[1]
$ boardctl fan full --sim <&- >&- 2>&-
[1]
)sh");
}

TEST(CommandLine, ExitsWithTheNumberOfTheSignalThatEndsIt) {
    for (const int signal : {SIGINT, SIGHUP}) {
        support::Program meter({BOARDCTL, "cpu", "--count", "1000000000", "--period", "0.1"});
        ASSERT_TRUE(meter.waitForOutput("\n"));
        meter.signal(signal);
        EXPECT_EQ(meter.finish().status, 128 + signal);
    }
}

TEST(CommandLine, StopsWaitingForADeviceIfASignalArrives) {
    const TempDir dir;
    dir.makePipe("pipe");
    support::Program reader({BOARDCTL, "bd", "show", dir.path("pipe")});
    int writer = -1; // there is a reader once it can be opened
    while ((writer = ::open(dir.path("pipe").c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)) < 0)
        ::sched_yield();
    int unread = 1;
    ASSERT_EQ(::write(writer, "x", 1), 1);
    while (unread > 0) // until boardctl has read it; then it waits for more
        ::ioctl(writer, FIONREAD, &unread);
    reader.signalInItsSleep(SIGTERM);
    const support::Outcome outcome = reader.finish();
    ::close(writer);
    EXPECT_EQ(outcome.status, 128 + SIGTERM);
    EXPECT_EQ(outcome.err,
              "boardctl: " + dir.path("pipe") + ": can't read: Interrupted system call\n");
}
