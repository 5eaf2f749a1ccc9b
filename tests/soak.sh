#!/usr/bin/env bash
# Hosts a simulated board while clients write random lines into the LED pipe, press the button and
# run `boardctl info`. Afterwards memory and descriptors must be as before, no press may be lost,
# and the host must end at once on SIGTERM.
set -euo pipefail

usage="usage: tests/soak.sh SECONDS [BUILD]   (BUILD: a build folder; default build/host)"
if ! [[ ${1-} =~ ^[1-9][0-9]*$ ]] || (($# > 2)); then
    echo "$usage" >&2
    exit 2
fi
seconds=$1
boardctl=$(realpath -- "${2-"$(dirname -- "$0")/../build/host"}")/bin/boardctl
# Allows for pages that the allocator requests late. A leak in anything that happens ten times a
# second exceeds this within minutes.
slack_kb=256
# A sanitizer keeps freed memory for a while. It reports leaks itself when the host ends.
if grep -q '^BOARD_SANITIZE:STRING=.' "${boardctl%/bin/boardctl}/CMakeCache.txt" 2>/dev/null; then
    slack_kb=16384
fi

fail() {
    echo "soak: $*" >&2
    exit 1
}

[[ -x $boardctl ]] || fail "there is no $boardctl; build the tree first"

# The LED pipe has the same path on every machine. Take a private /tmp if the machine allows it and
# the program stays visible; otherwise lock out other tests that use the pipe.
if [[ -z ${SOAK_PRIVATE-} && $boardctl != /tmp/* ]] && unshare -m true 2>/dev/null; then
    SOAK_PRIVATE=1 exec unshare -m "$0" "$seconds" "${boardctl%/bin/boardctl}"
fi
if [[ -n ${SOAK_PRIVATE-} ]]; then
    mount -t tmpfs tmp /tmp
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

# --- the host ---------------------------------------------------------------------------------------------

events() { grep -c "^{\"event\":\"$1\"" "$folder/events" || true; }
descriptors() { find "/proc/$host/fd" -mindepth 1 -printf '.' 2>/dev/null | wc -c; }
memory_kb() { awk '/^VmRSS/ { print $2 }' "/proc/$host/status"; }

# until_true WHAT COMMAND...: runs the command every 20 ms until it succeeds, for at most 30
# seconds.
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

# --- its clients; each ends after its current round if the file `stop` exists ---------------------

goes_on() { [[ ! -e $folder/stop ]]; }

write_lines() {
    local words=(system line alarm search lamp all boot ready ring call idle once start stop test defaults x)
    local any=${#words[@]}
    while goes_on; do
        case $((RANDOM % 8)) in
        0) head -c $((RANDOM % 60)) /dev/urandom ;;
        1) printf '%s %s' "${words[RANDOM % any]}" "${words[RANDOM % any]}" ;; # no newline: the next line continues it
        *) printf '%s %s %d\n' "${words[RANDOM % any]}" "${words[RANDOM % any]}" $((RANDOM % 3)) ;;
        esac >/tmp/evt.fifo
        echo >>"$folder/lines"
        sleep 0.05
    done
}

press() {
    while goes_on; do
        "$boardctl" --board "$board" sim press --for 0.02 >/dev/null
        echo >>"$folder/presses"
    done
}

ask() {
    while goes_on; do
        "$boardctl" --board "$board" info >/dev/null
        echo >>"$folder/infos"
        sleep 0.1
    done
}

count() { wc -l <"$folder/$1"; }
sample() { printf '%8s s %8s kB %5s descriptors %8s lines %8s presses %8s infos\n' "$1" "$(memory_kb)" "$(descriptors)" \
    "$(count lines)" "$(count presses)" "$(count infos)"; }

# load SECONDS: runs the clients for so long, then waits until the host has handled everything.
load() {
    local start=$SECONDS next=$((SECONDS + ($1 + 9) / 10)) before
    clients=()
    rm -f "$folder/stop"
    for client in write_lines press ask; do
        "$client" &
        clients+=($!)
    done
    while ((SECONDS - start < $1)); do
        sleep 0.1
        kill -0 "$host" "${clients[@]}" 2>/dev/null || fail "the host or a client ended: $(tail -3 "$folder/messages")"
        if ((SECONDS >= next)); then
            sample $((SECONDS - start))
            next=$((next + ($1 + 9) / 10))
        fi
    done
    touch "$folder/stop"
    wait "${clients[@]}" || fail "a client failed"
    clients=()
    until_true "release of the last press" is_seen button-released "$(count presses)"
    # Once a valid line is handled, the pipe is empty.
    before=$(events led-command)
    printf '\nlamp test 0\n' >/tmp/evt.fifo
    until_true "command after the random lines" is_seen led-command $((before + 1))
}

# --- the run ----------------------------------------------------------------------------------------------

touch "$folder"/{lines,presses,infos}
"$boardctl" sim create "$folder/board" >/dev/null
"$boardctl" --board "$board" --format json run >"$folder/events" 2>"$folder/messages" &
host=$!
until_true "ready" is_seen ready 1

load 2 # allocates what is allocated once, at the first use
descriptors=$(descriptors)
memory=$(memory_kb)
load "$seconds"
sample "$seconds"

until_true "return to $descriptors descriptors, there are $(descriptors)" has_descriptors "$descriptors"
grown=$(($(memory_kb) - memory))
((grown <= slack_kb)) || fail "memory grew by $grown kB (expected at most $slack_kb)"
pressed=$(events button-pressed) released=$(events button-released) presses=$(count presses)
((pressed == presses && released == presses)) ||
    fail "$presses presses came as $pressed pressed and $released released"
lost=$(grep -c 'could be printed' "$folder/events" || true)
((lost == 0)) || fail "events were lost: $(grep -m 1 'could be printed' "$folder/events")"

kill -TERM "$host"
start=${EPOCHREALTIME/./}
status=0
wait "$host" || status=$?
took=$(((${EPOCHREALTIME/./} - start) / 1000))
host=
((status == 0)) || fail "the host ended with status $status: $(tail -5 "$folder/messages")"
((took <= 1000)) || fail "the host took $took ms to end (expected at most 1000)"
is_seen stopped 1 || fail "the host did not say that it stopped"
echo "memory grew by $grown kB, descriptors are $descriptors as before; SIGTERM ended it in $took ms"
