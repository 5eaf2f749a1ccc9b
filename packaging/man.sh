#!/usr/bin/env bash
# Prints the manual page of boardctl, made from what `--help` says of it and of each of its commands.
# usage: packaging/man.sh BOARDCTL
set -euo pipefail

boardctl=$1
sections=$(mktemp)
trap 'rm -f "$sections"' EXIT

subcommands() { sed -n '/^Subcommands:/,/^$/s/^  \([a-z][a-z]*\)  .*/\1/p'; }

# describe WORD...: the help of a command, then of those below it.
describe() {
    local help name
    help=$("$boardctl" "$@" --help)
    if grep -q '^Subcommands:' <<<"$help"; then
        for name in $(subcommands <<<"$help"); do
            describe "$@" "$name"
        done
        return
    fi
    # The usage stands in the heading, and what holds for all commands in the options above.
    printf '.SS "%s"\n' "$(sed -n 's/^Usage: boardctl //p' <<<"$help")"
    printf '.nf\n'
    sed -e '/^Usage: /d' -e '/^  -h,--help /d' -e '/^Before or after the command:/d' -e '/^Options:$/d' <<<"$help" |
        cat -s | sed -e 's/\\/\\e/g' -e 's/-/\\-/g' -e "s/^[.']/\\\\\&&/"
    printf '.fi\n'
}

{
    printf '[COMMANDS]\n'
    for name in $("$boardctl" --help | subcommands); do
        describe "$name"
    done
    cat <<'TEXT'
[EXIT STATUS]
0: done. 1: it failed, and standard error says why. 2: the call was wrong.
[FILES]
.TP
/etc/boarddrivers/board.toml
The profile of the board that the service hosts.
.TP
/tmp/evt.fifo
The pipe that takes commands for the LEDs of the board that is hosted, such as \fBsystem boot 0\fR.
[ENVIRONMENT]
.TP
BOARD_LOG_LEVEL
Shows log messages up to this level on standard error, 3 (errors) without it; 7 shows everything.
.TP
NO_COLOR
Anything in it turns colours off.
TEXT
} >"$sections"
help2man --no-info --name='host, show and edit a board' --include="$sections" "$boardctl" |
    sed '/^\.SS "Subcommands:"/,/^\.SH COMMANDS/{/^\.SH COMMANDS/!d}'
