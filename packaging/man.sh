#!/usr/bin/env bash
# Prints the manual page of a program, generated from the help of the program and of each command.
# Sections that the help does not contain come from NAME.h2m in this folder.
# usage: packaging/man.sh PROGRAM
set -euo pipefail

program=$1
name=$(basename "$program")
sections=$(mktemp)
trap 'rm -f "$sections"' EXIT

subcommands() { sed -n '/^Subcommands:/,/^$/s/^  \([a-z][a-z]*\)  .*/\1/p'; }

# describe WORD...: prints the help of a command, or of its subcommands.
describe() {
    local help command
    help=$("$program" "$@" --help)
    if grep -q '^Subcommands:' <<<"$help"; then
        for command in $(subcommands <<<"$help"); do
            describe "$@" "$command"
        done
        return
    fi
    # Leaves out the usage, which the heading shows, and the common options, which the page lists
    # once.
    printf '.SS "%s"\n' "$(sed -n "s/^Usage: $name //p" <<<"$help")"
    printf '.nf\n'
    sed -e '/^Usage: /d' -e '/^  -h,--help /d' -e '/^Global options:/d' -e '/^Options:$/d' <<<"$help" |
        cat -s | sed -e 's/\\/\\e/g' -e 's/-/\\-/g' -e "s/^[.']/\\\\\&&/"
    printf '.fi\n'
}

{
    commands=$("$program" --help | subcommands)
    [[ -z $commands ]] || printf '[COMMANDS]\n'
    for command in $commands; do
        describe "$command"
    done
    cat "$(dirname "$0")/$name.h2m"
} >"$sections"
# The date of the page is that of the changelog.
SOURCE_DATE_EPOCH=$(date --date "$(sed -n 's/^ -- .*>  //p;T;q' "$(dirname "$0")/changelog")" +%s)
export SOURCE_DATE_EPOCH
help2man --no-info --include="$sections" "$program" |
    sed '/^\.SS "Subcommands:"/,/^\.SH COMMANDS/{/^\.SH COMMANDS/!d}'
