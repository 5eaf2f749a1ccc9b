#!/usr/bin/env bash
# Checks the figures that boardctl prints, and the rules and the scrape configuration in
# docs/operations.md, with Prometheus's promtool. Unpacks promtool into FOLDER, unless it is there
# already, and installs nothing: tests/promtool.sh FOLDER BOARDCTL
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

# block FIRST-WORD: prints the code block of the page that begins with this word.
block() {
    awk -v first="$1" '/^```/ { if (index(text, first) == 1) printf "%s", text
                                text = ""; inside = !inside; next }
        inside { text = text $0 "\n" }' "$page"
}
block groups: >"$folder/rules.yml"
block scrape_configs: >"$folder/config.yml"
{ "$promtool" check rules "$folder/rules.yml" && "$promtool" check config "$folder/config.yml"; } \
    >"$folder/rules.log" 2>&1 || {
    cat "$folder/rules.log" >&2
    exit 1
}
rules=$(grep -c 'alert:' "$folder/rules.yml")
echo "promtool accepts the figures, $rules rules and the scrape of $(grep -oE '[0-9.]+:[0-9]+' "$folder/config.yml")"
