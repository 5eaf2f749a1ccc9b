#!/usr/bin/env bash
# Prints the manual page of boardctl, generated from the help of the program and of each command.
# usage: packaging/man.sh BOARDCTL
set -euo pipefail

boardctl=$1
sections=$(mktemp)
trap 'rm -f "$sections"' EXIT

subcommands() { sed -n '/^Subcommands:/,/^$/s/^  \([a-z][a-z]*\)  .*/\1/p'; }

# describe WORD...: prints the help of a command, or of its subcommands.
describe() {
    local help name
    help=$("$boardctl" "$@" --help)
    if grep -q '^Subcommands:' <<<"$help"; then
        for name in $(subcommands <<<"$help"); do
            describe "$@" "$name"
        done
        return
    fi
    # The heading shows the usage, and the page lists the common options only once.
    printf '.SS "%s"\n' "$(sed -n 's/^Usage: boardctl //p' <<<"$help")"
    printf '.nf\n'
    sed -e '/^Usage: /d' -e '/^  -h,--help /d' -e '/^Global options:/d' -e '/^Options:$/d' <<<"$help" |
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
0: done. 1: failed; standard error says why. 2: wrong call. 3: a check or a comparison found
something wrong. 4: declined at a prompt, or no terminal to ask on. 128+N: ended by signal N.
Commands that a signal usually ends, such as \fBrun\fR, then exit with 0.
[FILES]
.TP
/etc/boarddrivers/board.toml
Profile of the board that the service hosts, and of every call that names no board.
.TP
/tmp/evt.fifo
Pipe for LED commands to the hosted board, such as \fBsystem boot 0\fR.
.TP
~/.local/state/boardctl
Backups of board descriptors, and the journals of writes that were interrupted.
[ENVIRONMENT]
.TP
BOARDCTL_BOARD
Profile of the board, for calls without \fB\-\-board\fR.
.TP
BOARD_LOG_LEVEL
Highest level of log messages shown on standard error: 3 (errors) by default; 7 shows everything.
.TP
XDG_STATE_HOME
Folder that holds \fBboardctl/\fR in place of ~/.local/state.
.TP
NO_COLOR
Turns colors off if it is set to anything.
TEXT
} >"$sections"
help2man --no-info --name='host, show and edit a board' --include="$sections" "$boardctl" |
    sed '/^\.SS "Subcommands:"/,/^\.SH COMMANDS/{/^\.SH COMMANDS/!d}'
