#!/usr/bin/env bash
# Starts, disturbs, upgrades and removes the installed services under a real systemd:
# tests/systemd/test.sh PACKAGES
set -euo pipefail

packages=$(realpath -- "$1")
folder=$(dirname -- "$(readlink -f -- "$0")")
work=$(mktemp -d)
booted=

# If the first process of the namespaces ends, the kernel ends all others.
end() {
    [[ -z $booted ]] || kill -KILL "$booted" || true
    wait || true
    rm -rf "$work"
}
trap end EXIT

fail() {
    echo "systemd: $*" >&2
    inside journalctl --no-pager --lines 50 >&2 || cat "$work/log" >&2
    exit 1
}

if ! unshare --net --mount --pid --fork --ipc --uts --mount-proc true 2>/dev/null; then
    echo "systemd: skipped: no namespaces for this user on this machine"
    exit 0
fi

inside() { nsenter --target "$booted" --net --mount --pid --ipc --uts --root --wdns=/ "$@"; }

# until_true WHAT COMMAND...: repeats the command until it succeeds, for at most a minute.
until_true() {
    local what=$1 end=$((SECONDS + 60))
    shift
    until "$@" >/dev/null 2>&1; do
        ((SECONDS < end)) || fail "after a minute still not true: $what"
        read -rt 0.1 <>"$work/never" || true
    done
}
mkfifo "$work/never"

property() { inside systemctl show --property "$1" --value boardctl; }
is() { [[ $(property "$1") == "$2" ]]; }
shows() { [[ $(inside cat "/run/board/leds/$1.state") == "$2" ]]; }
web_has() {
    # shellcheck disable=SC2016 # expanded by the inner shell
    [[ $(inside bash -c 'exec 3<>/dev/tcp/127.0.0.1/8411
        printf "GET %s HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n" "$1" >&3
        cat <&3' web "$1") == *"$2"* ]]
}
journal_has() { inside journalctl --no-pager --unit boardctl | grep -q -- "$1"; }

unshare --net --mount --pid --fork --ipc --uts --propagation private "$folder/boot.sh" "$packages" "$work" >"$work/log" 2>&1 &
started() { booted=$(pgrep --parent "$1"); }
until_true "the namespaces have a first process" started $!
until_true "systemd runs" inside systemctl is-active test.target

is ActiveState inactive || fail "the package started the service, which has no profile yet"
# Type=notify: returns once the host has reported that it is ready.
inside systemctl start boardctl || fail "the service does not start"
is ActiveState active || fail "the service is $(property ActiveState)"
until_true "the service says how the board is" is StatusText "7 devices, no alarm"

# boardweb runs as a user without privileges, who can open only the host's socket.
inside systemctl --quiet enable --now boardweb || fail "boardweb does not start"
until_true "boardweb shows the board" web_has /status '"name":"thermal"'
[[ $(inside ps --no-headers -o user -C boardweb) != root ]] || fail "boardweb runs as root"
[[ $(inside stat --format %a:%U /tmp/evt.fifo) == 600:root ]] || fail "the LED pipe is not private"

# A device that goes and comes back.
inside mv /run/board/dev/temperature /run/board/gone
until_true "an alarm" is StatusText "7 devices, 1 alarm: thermal gone"
inside mv /run/board/gone /run/board/dev/temperature
until_true "the end of the alarm" is StatusText "7 devices, no alarm"
journal_has "thermal" || fail "the journal says nothing about the sensor"

# A host that hangs is killed and started again; its LEDs then show the same as before.
inside boardctl leds send system ready
inside boardctl leds send line call
until_true "the LED lit" shows line 1
inside mkdir -p /run/systemd/system/boardctl.service.d
inside sh -c 'printf "[Service]\nWatchdogSec=2\n" >/run/systemd/system/boardctl.service.d/test.conf'
inside systemctl daemon-reload
inside systemctl restart boardctl
first=$(property MainPID)
until_true "the LED lit after a restart" shows line 1
inside kill -STOP "$first"
until_true "the watchdog starts the host again" is NRestarts 1
until_true "the host is ready again" is ActiveState active
[[ $(property MainPID) != "$first" ]] || fail "the hanging host was not replaced"
until_true "the LED lit after the watchdog" shows line 1

# An upgrade restarts the service, a removal stops it.
inside dpkg --purge boardweb >>"$work/log" 2>&1 || fail "the removal of boardweb failed"
! inside pgrep -x boardweb >/dev/null || fail "boardweb still runs after its removal"
! inside test -h /etc/systemd/system/multi-user.target.wants/boardweb.service ||
    fail "boardweb is still enabled after its removal"
first=$(property MainPID)
inside sh -c 'dpkg --install /run/packages/boardctl_*.deb' >>"$work/log" 2>&1 || fail "the upgrade failed"
is ActiveState active || fail "the upgrade stopped the service"
! is MainPID "$first" || fail "the upgrade did not restart the service"
inside dpkg --purge boardctl >>"$work/log" 2>&1 || fail "the removal failed"
! inside pgrep -x boardctl >/dev/null || fail "the host still runs after the removal"
inside test -e /etc/boarddrivers/board.toml || fail "the removal took the profile"
echo "started, watched, shown by boardweb, hung and restarted with its LEDs, upgraded, removed"
