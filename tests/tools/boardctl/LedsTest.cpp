#include "support/Transcript.h"

using support::expectTranscript;
using support::TempDir;

TEST(Leds, AreCheckedAndPreviewedWithoutAServiceOrAPipe) {
    expectTranscript(TempDir(), R"sh(
$ rm -f /tmp/evt.fifo
$ printf "[leds]\n[[leds.command]]\nword1='a'\nword2='b'\nmask=0\naction='roll-up'\n" >board.toml
$ json --board board.toml leds check
{ "mistakes": [ "board.toml:2: leds.command[0].mask: the roll has no LED: it shows nothing" ] }
! boardctl: board.toml:2: leds.command[0].mask: the roll has no LED: it shows nothing
[3]
$ json --sim leds preview --ticks 8 --at '1 line call' --at '9 all defaults' --at '3 line idle'
{ "ticks": 8, "leds": [ { "mask": 1, "wave": "00000000" }, { "mask": 2, "wave": "01100000" }, { "mask": 4, "wave": "00000000" }, { "mask": 16, "wave": "00000000" }, { "mask": 32, "wave": "00000000" }, { "mask": 64, "wave": "00000000" }, { "mask": 128, "wave": "00000000" } ], "simulated": true }
! boardctl: tick 9 is after the last one: 'all defaults' has no effect
$ boardctl --sim leds preview --ticks 10 --at '2 search start' --at '4 no such row' | tail -n 5
bar2   ...#...#..
bar3   ....#...#.
bar4   .....#...#
  v tick 2, 200 ms: search start
  v tick 4, 400 ms: no such row
! boardctl: 'no such row' matches no row of the table and has no effect
$ json --sim leds preview --at "1 `printf '%079d' 0`" --at '1 a b' --at '1 c d' 2>&1 >gone
boardctl: the lines of tick 1 have more than 80 bytes: a board would cut them
boardctl: '0000000000000000000000000000000000000000000000000000000000000000000000000000000' matches no row of the table and has no effect
boardctl: 'a b' matches no row of the table and has no effect
boardctl: 'c d' matches no row of the table and has no effect
$ test ! -e /tmp/evt.fifo
)sh");
}

TEST(Leds, SendFailsIfNoRowMatchesNobodyReadsThePipeOrItIsFull) {
    expectTranscript(TempDir(), R"sh(
$ rm -f /tmp/evt.fifo; boardctl leds send a b
! boardctl: /tmp/evt.fifo: the pipe does not exist, so no LED service is running (`boardctl run` starts one)
[1]
$ mkfifo /tmp/evt.fifo; boardctl leds send a b
! boardctl: /tmp/evt.fifo: nobody reads the pipe, so no LED service is running (`boardctl run` starts one)
[1]
$ rm /tmp/evt.fifo; printf '' >/tmp/evt.fifo; boardctl leds send a b; rm /tmp/evt.fifo
! boardctl: /tmp/evt.fifo: is not a pipe (expected a pipe or no file: remove it)
$ mkfifo /tmp/evt.fifo; exec 3<>/tmp/evt.fifo; json leds send `printf '%068d' 0` b -01234567; boardctl leds send system ready; head -n 2 <&3 | tail -c 20
{ "sent": "00000000000000000000000000000000000000000000000000000000000000000000 b -1234567" }
234567
system ready
$ printf "[leds]\ncommand = [{ word1 = 'a', word2 = 'b', mask = 1, action = 'on' }]\n" >board.toml
$ exec 3<>/tmp/evt.fifo; export BOARDCTL_BOARD=board.toml; boardctl leds send a b 1 || echo $?; boardctl leds send a b; head -n 1 <&3
1
a b
! boardctl: board.toml: no row of [leds] matches 'a b 1', so it was not sent
$ exec 3<>/tmp/evt.fifo; head -c 65536 /dev/zero >&3; boardctl leds send a b; rm /tmp/evt.fifo
! boardctl: /tmp/evt.fifo: the pipe is full: its reader can't keep up
)sh");
}

TEST(SystemInformation, IsOneDocumentOrOneForEachPeriod) {
    expectTranscript(TempDir(), R"sh(
$ boardctl cpu --period 0.1 --count 2 --format json | sed 's/[0-9][0-9]*/N/'
{"last":N,"mid":null,"longest":null}
{"last":N,"mid":null,"longest":null}
$ boardctl cpu --period 0.1 --count 14 | sed -n 's/[0-9]* %/N %/gp' | sed -n '4p;5p;13p;14p'
N %
N %, N % over 5 periods
N %, N % over 5 periods
N %, N % over 5 periods, N % over 14
$ json cpu --period 0.1 | sed 's/[0-9][0-9]*/N/'
{ "last": N, "mid": null, "longest": null }
$ printf '6.0\nBranch\n12\n\n\nboard\ndev\nsimulated\n' >info; json firmware info; boardctl firmware info
{ "version": "6.0-dev/12", "line1": "6.0", "line2": "Branch", "line3": "12", "line6": "board", "line7": "dev", "line8": "simulated" }
6.0-dev/12
$ json firmware gone
{ "version": null, "error": "OPEN 'gone' FAILED (gone: can't open: No such file or directory)" }
! boardctl: OPEN 'gone' FAILED (gone: can't open: No such file or directory)
[1]
$ printf '' >info; boardctl firmware info
! boardctl: info: holds no firmware information
[1]
$ printf '6.0\nTest' >info; boardctl firmware info
6.0/
$ for i in '\n\n7' '6.0\0001\n' 'a\r\n\033[1mb'; do printf "$i" >info; boardctl firmware info; done
! boardctl: info: line 1 is empty (expected the version)
! boardctl: info: byte 3 is not text (expected the lines of a firmware information file)
! boardctl: info: byte 3 is not text (expected the lines of a firmware information file)
[1]
)sh");
}
