#include <csignal>

#include "support/Transcript.h"

using support::expectTranscript;
using support::TempDir;

TEST(Leds, AreCheckedAndPreviewedWithoutAServiceOrAPipe) {
    expectTranscript(TempDir(), R"sh(
$ rm -f /tmp/evt.fifo
$ printf "[leds]\n[[leds.command]]\nword1='a'\nword2='b'\nmask=0\naction='roll-up'\n" >board.toml
$ json --board board.toml leds check
{ "mistakes": [ "board.toml:2: leds.command[0].mask: the roll has no LED: it shows nothing" ], "findings": [ { "place": "board.toml:2: leds.command[0].mask", "what": "the roll has no LED: it shows nothing", "level": "error" } ], "files_checked": true }
[3]
$ printf "[leds]\nfile = [{ mask = 1, path = 'led:a', name = 'Power', color = 'green' }, { mask = 2, path = 'led:b' }]\n" >lamp.toml
$ printf "command = [{ word1 = 'a', word2 = 'on', mask = 1, action = 'on' }, { word1 = 'all', word2 = 'test', number = 2, mask = 3, action = 'on', time_ms = 250 }]\n" >>lamp.toml
$ json --board lamp.toml leds preview --ticks 6 --at '1 a on' --at '9 a on' --at '0.2s all test 2' --at '2 no row'
{ "ticks": 6, "tick_ms": 100, "leds": [ { "mask": 1, "name": "Power", "color": "green", "wave": "011111", "segments": [ { "from": 1, "to": 2, "row": 0, "words": "a on 0", "light": "steady", "timed": false, "covered": [] }, { "from": 2, "to": 5, "row": 1, "words": "all test 2", "light": "steady", "timed": true, "covered": [ { "from": 2, "to": 5, "row": 0, "words": "a on 0", "light": "steady", "timed": false } ] }, { "from": 5, "to": 6, "row": 0, "words": "a on 0", "light": "steady", "timed": false, "covered": [] } ] }, { "mask": 2, "name": "b", "color": null, "wave": "001110", "segments": [ { "from": 2, "to": 5, "row": 1, "words": "all test 2", "light": "steady", "timed": true, "covered": [] } ] } ], "events": [ { "tick": 1, "ms": 100, "line": "a on", "row": 0 }, { "tick": 2, "ms": 200, "line": "all test 2", "row": 1 }, { "tick": 2, "ms": 200, "line": "no row", "row": null } ] }
! boardctl: 'no row' matches no row of the table and has no effect
! boardctl: tick 9 is after the last one: 'a on' has no effect
$ printf '# a demo\n\n 300ms all test 2\n1 a on\n' >demo; boardctl --board lamp.toml leds preview --for 0.75 --script demo --play --speed 1000
tick 0, 0 ms: [ ] Power [ ] b
tick 1, 100 ms: a on
tick 1, 100 ms: [#] Power [ ] b
tick 3, 300 ms: all test 2
tick 3, 300 ms: [#] Power [#] b
tick 6, 600 ms: [#] Power [ ] b
$ echo 'soon a on' >>demo; boardctl --board lamp.toml leds preview --script demo
! boardctl: demo:5: 'soon a on' (expected "TICK LINE" with a tick of 1 to 1000000, such as "1 system ready", or "TIME LINE", such as "2.5s system ready")
[1]
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

TEST(Leds, AreCheckedWithTheirFilesIfTheMachineHasThemAndStrictlyOnRequest) {
    expectTranscript(TempDir(), R"sh(
$ printf "[leds]\nfile = [\n{ mask = 1, path = 'led:a' },\n{ mask = 2, path = 'led:b', on = 9 }]\n" >board.toml
$ printf "command = [{ word1 = 'a', word2 = 'b', mask = 3, action = 'on', time_ms = 150 }]\n" >>board.toml
$ boardctl --board board.toml leds check --sysfs sys
warning: board.toml:5: leds.command[0].time_ms: 150 is not a multiple of the tick of 100 ms: the row lasts 2 ticks, 200 ms
this machine has none of the LEDs, so only the tables were checked
$ json --board board.toml leds check --sysfs sys --strict | grep -o '"level.*'
"level": "warning" } ], "files_checked": false }
$ sed -i s/150/200/ board.toml; boardctl --board board.toml leds check --sysfs sys --strict
no mistakes
this machine has none of the LEDs, so only the tables were checked
$ mkdir -p sys/class/leds/b/brightness; boardctl --board board.toml leds check --sysfs sys
error: board.toml:3: leds.file[0].path: this LED is not driven: led:a: there is no LED 'a' (there are: 'b')
error: board.toml:4: leds.file[1].path: this LED is not driven: sys/class/leds/b/brightness: is not an LED's file (expected a file, a pipe or a character device)
[3]
$ cd sys/class/leds; rmdir b/brightness; cp -r b a; for i in a b; do echo 0 >$i/brightness; echo 255 >$i/max_brightness; done; echo 8 >b/max_brightness
$ boardctl --board board.toml leds check --sysfs sys; boardctl --sim leds check --strict
warning: board.toml:3: leds.file[0].path: `on` is 1, but sys/class/leds/a/max_brightness holds 255: when lit, the LED is almost dark
error: board.toml:4: leds.file[1].path: `on` is 9, but sys/class/leds/b/max_brightness holds 8: the LED is lit at 8
no mistakes
$ sed -i 's/ = 9/ = 8/' board.toml; for i in --strict ''; do boardctl --board board.toml leds check $i --sysfs sys; echo $?; done
warning: board.toml:3: leds.file[0].path: `on` is 1, but sys/class/leds/a/max_brightness holds 255: when lit, the LED is almost dark
3
warning: board.toml:3: leds.file[0].path: `on` is 1, but sys/class/leds/a/max_brightness holds 255: when lit, the LED is almost dark
0
)sh");
}

TEST(Leds, ArePlayedUntilASignalEndsTheProgram) {
    support::Program played({BOARDCTL, "--sim", "leds", "preview", "--play", "--ticks", "1000000"});
    ASSERT_TRUE(played.waitForOutput("tick 0, 0 ms: [ ] power"));
    played.signal(SIGTERM);
    EXPECT_EQ(played.finish().status, 128 + SIGTERM);
}

TEST(Leds, SendFailsIfNoRowMatchesNobodyReadsThePipeOrTooSlowly) {
    expectTranscript(TempDir(), R"sh(
$ rm -f /tmp/evt.fifo; boardctl leds send a b
! boardctl: /tmp/evt.fifo: the pipe does not exist, so no LED service is running (`boardctl run` starts one)
[1]
$ mkfifo /tmp/evt.fifo; boardctl leds send a b
! boardctl: /tmp/evt.fifo: nobody reads the pipe, so no LED service is running (`boardctl run` starts one)
[1]
$ rm /tmp/evt.fifo; printf '' >/tmp/evt.fifo; boardctl leds send a b; rm /tmp/evt.fifo
! boardctl: /tmp/evt.fifo: is not a pipe (expected a pipe or no file: remove it)
$ mkfifo /tmp/evt.fifo; exec 3<>/tmp/evt.fifo; json leds send `printf '%068d' 0` b -01234567; head -n 1 <&3 | tail -c 7; boardctl leds send system ready; head -n 1 <&3
{ "sent": "00000000000000000000000000000000000000000000000000000000000000000000 b -1234567" }
234567
system ready
$ printf "[leds]\ntick_ms = 1\ncommand = [{ word1 = 'a', word2 = 'b', mask = 1, action = 'on' }]\n" >board.toml
$ exec 3<>/tmp/evt.fifo; export BOARDCTL_BOARD=board.toml; boardctl leds send a b 1 || echo $?; boardctl leds send a b; head -n 1 <&3
1
a b
! boardctl: board.toml: no row of [leds] matches 'a b 1', so it was not sent
$ exec 3<>/tmp/evt.fifo; echo x >&3; export BOARDCTL_BOARD=board.toml; boardctl leds send a b; rm /tmp/evt.fifo
! boardctl: /tmp/evt.fifo: 'a b' was not sent: its turn did not come in 300 ticks (the pipe's reader can't keep up)
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
