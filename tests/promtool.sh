#!/usr/bin/env bash
# Lets the checker of Prometheus judge the figures that boardctl prints and the rules in
# docs/operations.md. Unpacks the checker into FOLDER, unless it is there already, and installs
# nothing: tests/promtool.sh FOLDER BOARDCTL
set -euo pipefail

folder=$1
boardctl=$(realpath -- "$2")
page=$(dirname -- "$0")/../docs/operations.md

if [[ ! -e $folder/usr/bin/promtool ]]; then
    mkdir -p "$folder"
    (cd "$folder" && apt-get -q -o APT::Sandbox::User=root download prometheus >download.log 2>&1) || {
        cat "$folder/download.log" >&2
        exit 1
    }
    dpkg-deb --extract "$folder"/prometheus_*.deb "$folder"
fi
promtool=$folder/usr/bin/promtool

"$boardctl" --sim --format metrics info | "$promtool" check metrics
"$boardctl" sim create "$folder/board" >/dev/null
coproc host { exec "$boardctl" --board "$folder/board/board.toml" run 2>&1; }
while read -r line && [[ $line != ready ]]; do :; done <&"${host[0]}"
"$boardctl" --board "$folder/board/board.toml" --format metrics status | "$promtool" check metrics
# shellcheck disable=SC2154 # coproc sets it
pid=$host_PID
kill "$pid"
wait "$pid" # it removes its socket
rm -r "$folder/board"
# shellcheck disable=SC2016 # these are backticks of Markdown
sed -n '/^```yaml$/,/^```$/{/^```/!p}' "$page" >"$folder/rules.yml"
"$promtool" check rules "$folder/rules.yml" >"$folder/rules.log" 2>&1 || {
    cat "$folder/rules.log" >&2
    exit 1
}
echo "promtool accepts the figures and $(grep -c 'alert:' "$folder/rules.yml") rules"
