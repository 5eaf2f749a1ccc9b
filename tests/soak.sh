#!/usr/bin/env bash
# Hosts a simulated board while clients write random lines into the LED pipe, press the button and
# run `boardctl info`. Afterwards memory and descriptors must be as before, no press may be lost,
# and the host must end cleanly on SIGTERM.
set -euo pipefail

seconds=${1:?usage: tests/soak.sh SECONDS [BUILD]   (BUILD: a build folder; default build/host)}
boardctl=$(realpath -- "${2-"$(dirname -- "$0")/../build/host"}")/bin/boardctl
slack_kb=256 # for late page requests of the allocator; a leak ten times a second soon exceeds it
# A sanitizer keeps freed memory for a while, hence more slack. It reports leaks itself at the end.
! grep -q '^BOARD_SANITIZE:STRING=.' "${boardctl%/bin/boardctl}/CMakeCache.txt" 2>/dev/null ||
    slack_kb=16384

fail() {
    echo "soak: $*" >&2
    exit 1
}

[[ -x $boardctl ]] || fail "there is no $boardctl; build the tree first"

# The LED pipe has the same path on every machine. Take a private /tmp if the machine allows it and
# the program stays visible; otherwise lock out other tests that use the pipe.
if [[ -n ${SOAK_PRIVATE-} ]]; then
    mount -t tmpfs tmp /tmp
elif [[ $boardctl != /tmp/* ]] && unshare -m true 2>/dev/null; then
    SOAK_PRIVATE=1 exec unshare -m "$0" "$seconds" "${boardctl%/bin/boardctl}"
else
    exec {tmp_lock}</tmp
    flock "$tmp_lock"
fi

folder=$(mktemp -d)
board=$folder/board/board.toml
host=
clients=()
# shellcheck disable=SC2317 # called by the trap
end() {
    ((${#clients[@]} == 0)) || kill "${clients[@]}" 2>/dev/null || true
    [[ -z $host ]] || kill -KILL "$host" 2>/dev/null || true
    rm -rf "$folder"
}
trap end EXIT

events() { grep -c "^{\"event\":\"$1\"" "$folder/events" || true; }
descriptors() { find "/proc/$host/fd" -mindepth 1 -printf '.' 2>/dev/null | wc -c; }
memory_kb() { awk '/^VmRSS/ { print $2 }' "/proc/$host/status"; }

# until_true WHAT COMMAND...: runs the command every 20 ms until it succeeds, for at most 30 s.
until_true() {
    local what=$1 try
    shift
    for ((try = 0; try < 1500; ++try)); do
        ! "$@" || return 0
        kill -0 "$host" 2>/dev/null || fail "the host ended: $(tail -3 "$folder/messages")"
        sleep 0.02
    done
    fail "no $what within 30 s; the last events: $(tail -3 "$folder/events")"
}

is_seen() { (($(events "$1") >= $2)); }
has_descriptors() { (($(descriptors) == $1)); }

# The clients. Each repeats its work until the file `stop` exists.

write_lines() {
    local words=(system line alarm lamp all boot ready ring call start stop test x)
    local any=${#words[@]}
    case $((RANDOM % 8)) in
    0) head -c $((RANDOM % 60)) /dev/urandom ;;
    # Without a newline: the next line continues it.
    1) printf '%s %s' "${words[RANDOM % any]}" "${words[RANDOM % any]}" ;;
    *) printf '%s %s %d\n' "${words[RANDOM % any]}" "${words[RANDOM % any]}" $((RANDOM % 3)) ;;
    esac >/tmp/evt.fifo
    sleep 0.05
}

press() { "$boardctl" --board "$board" sim press --for 0.02 >/dev/null; }

ask() {
    "$boardctl" --board "$board" info >/dev/null
    sleep 0.1
}

rounds() {
    while [[ ! -e $folder/stop ]]; do
        "$1"
        echo >>"$folder/$1"
    done
}

count() { wc -l <"$folder/$1"; }

# load SECONDS: runs the clients for that time, then waits until the host has handled everything.
load() {
    local end=$((SECONDS + $1)) before
    rm -f "$folder/stop"
    for client in write_lines press ask; do
        rounds "$client" &
        clients+=($!)
    done
    while ((SECONDS < end)); do
        kill -0 "$host" "${clients[@]}" || fail "the host or a client ended: $(tail -3 "$folder/messages")"
        sleep 0.1
    done
    touch "$folder/stop"
    wait "${clients[@]}" || fail "a client failed"
    clients=()
    until_true "release of the last press" is_seen button-released "$(count press)"
    # Once the host has handled a line sent after all others, the pipe is empty.
    before=$(events led-command)
    printf '\nlamp test 0\n' >/tmp/evt.fifo
    until_true "command after the random lines" is_seen led-command $((before + 1))
}

"$boardctl" sim create "$folder/board" >/dev/null
"$boardctl" --board "$board" --format json run >"$folder/events" 2>"$folder/messages" &
host=$!
until_true "ready" is_seen ready 1

load 2 # makes the host allocate what it allocates only once, at the first use
descriptors=$(descriptors)
memory=$(memory_kb)
load "$seconds"

until_true "return to $descriptors descriptors, there are $(descriptors)" \
    has_descriptors "$descriptors"
grown=$(($(memory_kb) - memory))
((grown <= slack_kb)) || fail "memory grew by $grown kB (expected at most $slack_kb)"
pressed=$(events button-pressed) released=$(events button-released) presses=$(count press)
((pressed == presses && released == presses)) ||
    fail "$presses presses came as $pressed pressed and $released released"
! grep -m 1 'could be printed' "$folder/events" || fail "events were lost"

kill -TERM "$host"
timeout 30 tail --pid="$host" -f /dev/null || fail "the host did not end within 30 s"
wait "$host" || fail "the host ended with status $?: $(tail -5 "$folder/messages")"
host=
is_seen stopped 1 || fail "the host did not say that it stopped"
echo "$(count write_lines) lines, $presses presses, $(count ask) reports: memory grew by $grown kB," \
    "descriptors are $descriptors as before"
