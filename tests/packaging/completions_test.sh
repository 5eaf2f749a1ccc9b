#!/usr/bin/env bash
# Completes command lines of boardctl as the shells do.
# usage: tests/packaging/completions_test.sh COMPLETIONS_PY BOARDCTL
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$1" "$2" "$folder"
cd "$folder"
touch image.bin
status=0

# shellcheck source=/dev/null # made from a template, which is checked itself
source "$folder/boardctl"
# shellcheck disable=SC2317 # called by the completion; bash's own works only during a completion
compopt() { :; }

# expect WORDS WORD...: bash must offer exactly WORDS for the last WORD.
expect() {
    local expected=$1
    COMP_WORDS=(boardctl "${@:2}")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    _boardctl
    [[ ${COMPREPLY[*]-} == "$expected" ]] || {
        echo "'boardctl ${*:2}' is completed by '${COMPREPLY[*]-}' (expected '$expected')" >&2
        status=1
    }
}

expect "button bd" b
expect "list get set add" bd mac ""
expect "send" --board x leds s # the value of an option is not a command
expect "--force --format" bd set --fo
expect "text json metrics svg html" info --format ""
expect "json" info --format = j # bash splits --format=j into these
expect "u8 u16 u32 uint" bd get --type u
expect "full high low off auto" fan ""
expect "" fan low ""
expect "on off" led status bi ""
expect "" led status blink ""
expect "image.bin" bd show im
expect "image.bin" bd check image.bin im
expect "image.bin" bd compare list.json im
expect "image.bin" bd set 5=u8:1 --image im
expect "" cpu --count ""

# offers EXPECTED LINE: fish must offer EXPECTED for the line, apart from descriptions.
offers() {
    local offered
    # shellcheck disable=SC2016 # expanded by fish
    offered=$(fish --no-config -c 'source boardctl.fish; complete -C $argv | string replace -r "\t.*" ""; true' "$2" | xargs)
    [[ $offered == "$1" ]] || {
        echo "fish completes '$2' by '$offered' (expected '$1')" >&2
        status=1
    }
}
if command -v fish >/dev/null; then
    offers "bd button" "boardctl b"
    offers "add get list set" "boardctl bd mac "
    offers "send" "boardctl --board x leds s"
    offers "--force --format" "boardctl bd set --fo"
    offers "--format=json" "boardctl info --format=j"
    offers "off on" "boardctl led status bi "
    offers "image.bin" "boardctl bd check image.bin im"
    offers "" "boardctl cpu --count "
fi
if command -v zsh >/dev/null; then
    zsh -n _boardctl || status=1
fi
exit "$status"
