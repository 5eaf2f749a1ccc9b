#!/usr/bin/env bash
# Builds the foreign client of the status socket, and runs it against a host with canned answers and
# one that hosts a simulated board.
# usage: tests/status-client/test.sh GO CANNED_HOST BUILD_FOLDER BOARDCTL
set -euo pipefail

mkdir -p "$3"
# Debian installs Go libraries into a GOPATH folder. Without modules, go downloads nothing.
GOCACHE=$3/cache GOPATH=/usr/share/gocode GO111MODULE=off GOFLAGS='' \
    "$1" build -o "$3/status-client" "$(dirname "$0")/main.go"

folder=$(mktemp -d)
host=
end() {
    [[ -z $host ]] || kill "$host" 2>/dev/null || true
    rm -rf "$folder"
}
trap end EXIT
touch "$folder/board.toml"
mkfifo "$folder/in" "$folder/out"
"$2" "$folder/board.toml" "$folder/host" <"$folder/in" >"$folder/out" &
host=$!
exec 3>"$folder/in" 4<"$folder/out"
read -r _ <&4
echo '{"event":"gone","time":"2026-05-31T10:00:00.000Z","text":"fan is gone"}
{"lit":4}' >"$folder/event"
"$3/status-client" "$folder/host" sh -c "cat '$folder/event' >'$folder/in'"
exec 3>&-
wait "$host"
host=

"$4" sim create "$folder/board" >/dev/null
rm "$folder/board/dev/power" # an alarm
"$4" --board "$folder/board/board.toml" run >"$folder/out" 2>&1 &
host=$!
exec 4<"$folder/out"
while read -r line <&4 && [[ $line != ready ]]; do :; done
"$3/status-client" "$folder/board/host.socket" "$4" leds send line call
kill "$host"
wait "$host"
host=
