#include "support/Transcript.h"

using support::expectTranscript;
using support::TempDir;

TEST(Snapshot, BecomesASimulatedBoardThatHoldsWhatTheBoardHeld) {
    expectTranscript(TempDir(), R"sh(
$ mkdir -p real/lamp; cd real; printf 'N/A\n' >heat; printf 7 >speed; printf 5 >mode; printf '\000\055\000\010\022\064\253\315' >eeprom
$ cd real; echo 1 >lamp/brightness; mkfifo button; printf 'voip.sip-legs = 9\n' >figures
$ cd real; printf "[[fan]]\nname='cpu'\ndevice='speed'\nmaximum=255\nenable='mode'\n[[thermal]]\nname='a'\ndevice='heat'\nmaximum=85\n" >board.toml
$ cd real; printf "[[power]]\nname='b'\ndevice='gone'\n[descriptor]\ndevice='eeprom'\nsize=16\n[button]\ndevice='button'\n[voip]\n" >>board.toml
$ cd real; printf "[preferences]\nfile='figures'\n[leds]\n[[leds.file]]\nmask=1\npath='lamp/brightness'\n" >>board.toml
$ cd real; printf "[[leds.file]]\nmask=2\npath='led:none'\n[[leds.command]]\nword1='a'\nword2='b'\nmask=1\naction='on'\n" >>board.toml
$ boardctl --board real/board.toml snapshot -o board.json; boardctl --board real/board.toml snapshot -o - >again; for i in board.json again; do sed '/time/d; /since_boot/d' $i >$i.steady; done; diff board.json.steady again.steady
board.json: written; 6 of 8 files of the board could be read
$ stat -c %a board.json
600
$ boardctl sim create copy --from board.json && cd copy && ls . dev leds && cat dev/fan0-enable leds/lamp.state && grep -e simul -e lamp board.toml
created copy/board.toml; try: boardctl --board copy/board.toml info
.:
board.toml
dev
eeprom.bin
leds
preferences

dev:
button
fan0
fan0-enable
thermal0

leds:
lamp
lamp.state
51simulated = true
path = 'leds/lamp'
$ cmp real/eeprom copy/eeprom.bin; for i in real copy; do boardctl --board $i/board.toml info 2>&1 | grep -v 'Since boot' | sed "s,$i/[a-z0-9/.:]*,PATH,"; done | sort | uniq -c | grep -v ' 2 '
      1 boardctl: driver 'b': PATH power[0].device: copy/dev/power0: can't open: No such file or directory
      1 boardctl: driver 'b': PATH power[0].device: real/gone: can't open: No such file or directory
$ for i in '{' '{"snapshot":2}' '{"snapshot":1,"profile":{"text":"a=1"},"files":[]}' '{"snapshot":1,"profile":{"text":""},"files":[{"key":"x","hex":"0"}]}'; do echo "$i" | boardctl sim create no --from -; done; test ! -e no
! boardctl: standard input: is not JSON (expected a snapshot, as 'boardctl snapshot' writes)
! boardctl: standard input: is a snapshot of another version (expected 1)
! boardctl: standard input: its profile: no/board.toml:1: a: unknown key (expected fan, thermal, power, led, descriptor, voip, preferences, button, firmware, leds, watch, simulated)
! boardctl: standard input: "hex" of x is not hexadecimal (expected a snapshot, as 'boardctl snapshot' writes)
)sh");
}

TEST(Snapshot, GivesEachLedFilesOfItsOwnAndForgetsTheGroupOfThePipe) {
    expectTranscript(TempDir(), R"sh(
$ for i in led1 z/led1 a a.state; do mkdir -p $i; echo 1 >$i/brightness; printf "[[leds.file]]\nmask=$((n = 2 * n + 1))\npath='$i/brightness'\n"; done >files
$ printf "[leds]\ngroup='ops'\n[[leds.command]]\nword1='a'\nword2='b'\nmask=1\naction='on'\n" | cat - files >board.toml
$ boardctl --board board.toml snapshot -o board.json && boardctl sim create copy --from board.json && cd copy/leds && echo * && grep -c group ../board.toml
board.json: written; 4 of 4 files of the board could be read
created copy/board.toml; try: boardctl --board copy/board.toml info
a a.state led1 led1.state led2 led2.state led3 led3.state
0
[1]
)sh");
}
