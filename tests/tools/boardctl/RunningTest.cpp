#include "support/Transcript.h"

using support::expectTranscript;
using support::TempDir;

namespace {

/// A folder with a board, and a script that hosts it with canned answers until descriptor 3 is
/// closed. What is written to descriptor 3 becomes events.
class RunningHost : public testing::Test {
protected:
    RunningHost() {
        m_dir.write("board.toml", "simulated = true\n");
        m_dir.write("host", "unset RUNTIME_DIRECTORY XDG_RUNTIME_DIR; mkfifo in out\n" CANNED_HOST
                            " board.toml <in >out &\nexec 3>in; read -r ready <out\n");
    }

    const TempDir m_dir;
};

} // namespace

TEST_F(RunningHost, ShowsWhatItKnows) {
    expectTranscript(m_dir, R"sh(
$ . ./host; boardctl --board board.toml status | sed "s=$PWD/==; s/2026-05-31/DATE/g"; exec 3>&-; wait
Board                       board.toml, simulated
Host                        version 1.0.0, started at DATET08:00:00.000Z
Firmware                    7.1
LED sequencer               running, commands are read from /tmp/evt.fifo, no file
LED lines                   4 handled, 1 matched no row
Button                      watched, 2 presses so far
CPU load                    3 %
Devices
  thermal 'thermal'         up since DATET08:00:00.000Z, 99.5 celsius, maximum 85, Board\x1b sensor
  fan 'fan'                 down since DATET09:00:00.000Z, can't open: No such file or directory
  led 'status'              up since DATET08:00:00.000Z, state 1
Alarms
  thermal                   thermal is over its maximum of 85, since DATET10:00:00.000Z
LEDs
  power                     on, row 7 'line call 0' (on), by 'line call' since DATET09:30:00.000Z, ends in 1200 ms (12 ticks)
  line                      off
Last events
  DATET09:30:00.000Z  LED command: line call
$ rm in out; . ./host; json --board board.toml status | cut -c 1-30; exec 3>&-; wait
{ "product": null, "profile": 
$ rm in out; . ./host; boardctl --board board.toml --format metrics status -o figures; cat figures; exec 3>&-; wait
board_info 1
)sh");
}

TEST_F(RunningHost, ExplainsItsLeds) {
    expectTranscript(m_dir, R"sh(
$ . ./host; for i in '' line pwer; do boardctl --board board.toml leds why $i; done; json --board board.toml leds why line; exec 3>&-; wait
power        on
  driven by  row 7 'line call 0' (on), by 'line call' since 2026-05-31T09:30:00.000Z, ends in 1200 ms (12 ticks)
  covers     row 0 'system boot 0' (blink), as a default since 2026-05-31T08:00:00.000Z
  covers     row 2 'a b -1' (on), by 'a b -1' since 2026-05-30T08:00:00.000Z, from before the host was restarted
line         off
  driven by  nothing
line         off
  driven by  nothing
{ "leds": [ { "name": "line", "mask": 2, "color": null, "lit": false, "drive": null, "covers": [] } ], "simulated": true }
! boardctl: the sequencer has no LED 'pwer' (there are: power, line); did you mean 'power'?
)sh");
}

TEST_F(RunningHost, IsWatchedUntilItEndsOrASignalComes) {
    expectTranscript(m_dir, R"sh(
$ . ./host; mkfifo log; "$0" --board board.toml watch 2>log 3>&- & exec 4<log; read -r line <&4; printf '%s\n' '{"event":"gone","time":"NOW","text":"fan\n is gone"}' '{"event":"new"}' >&3; exec 3>&-; wait $!; echo $?; sed "s=$PWD/==" <&4; wait
NOW fan\x0a is gone
 {"event":"new"}
1
boardctl: host.socket: the host has ended or closed the connection
$ rm in out log; . ./host; mkfifo log lines; "$0" --format json --board board.toml watch 2>log >lines 3>&- & exec 4<log 5<lines; read -r line <&4; echo '{"event":"gone","text":"fan"}' >&3; head -n 1 <&5; kill $!; wait $!; echo $?; exec 3>&-; wait
{"event":"gone","text":"fan","simulated":true}
0
)sh");
}

TEST_F(RunningHost, IsMissedWithAWordOnHowToStartIt) {
    expectTranscript(m_dir, R"sh(
$ unset RUNTIME_DIRECTORY XDG_RUNTIME_DIR; for i in status watch 'leds why'; do boardctl --board board.toml $i 2>&1 | sed "s=$PWD/=="; done; boardctl --board board.toml status 2>log
boardctl: no host of board.toml answers at host.socket or /run/boarddrivers/host (start one with `boardctl --board board.toml run`)
boardctl: no host of board.toml answers at host.socket or /run/boarddrivers/host (start one with `boardctl --board board.toml run`)
boardctl: no host of board.toml answers at host.socket or /run/boarddrivers/host (start one with `boardctl --board board.toml run`)
[1]
$ wrong --sim status
boardctl: no host runs a simulated board that is made for this call (expected --board with the board of a running host)
)sh");
}
