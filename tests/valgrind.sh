#!/usr/bin/env bash
# Runs the test programs of a build, and commands of boardctl that read, write and host, under
# valgrind: no invalid access, no use of uninitialized memory, no leak. Skips the tests of boardctl,
# because valgrind does not watch the programs that they start.
# usage: tests/valgrind.sh [BUILD]   (BUILD: a build folder; default build/host)
set -euo pipefail

bin=$(realpath -- "${1-"$(dirname -- "$0")/../build/host"}")/bin
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export GTEST_BRIEF=1
# If no descriptor is left, the kernel lets a connection wait; valgrind accepts and closes it.
export GTEST_FILTER=-StatusServerTest.WaitsWithoutSpinningIfNoDescriptorIsLeft

# checked NAME COMMAND...: runs the command under valgrind with its output in a log called NAME, and
# prints the log if it fails. Does not replace a test program's own operators new and delete: some
# of their calls are inlined, so valgrind would see only half of them.
checked() {
    local log=$folder/$1.log
    shift
    valgrind --quiet --leak-check=full --errors-for-leak-kinds=definite,indirect,possible --error-exitcode=99 \
        --soname-synonyms=somalloc=nouserintercepts --fair-sched=yes "$@" >"$log" 2>&1 || {
        cat "$log" >&2
        echo "valgrind: $* failed" >&2
        return 1
    }
}
export -f checked
export folder

# The LED pipe has the same path on every machine. Programs that get no private /tmp take turns.
jobs=$(nproc)
unshare -m true 2>/dev/null || jobs=1

"$bin/boardctl" sim create "$folder/board" >/dev/null
board=(--board "$folder/board/board.toml")
shopt -s extglob failglob
programs=("$bin"/!(boardctl|boardctl_faults|hosted_faults)_tests)

{
    for program in "${programs[@]}"; do echo "${program##*/} $program"; done
    printf '%s\n' "metrics $bin/boardctl --sim info --format metrics" \
        "dump $bin/boardctl bd dump $folder/board/eeprom.bin" \
        "set $bin/boardctl ${board[*]} bd set -y 0x800E=uint:121" \
        "preview $bin/boardctl --sim leds preview --ticks 20" \
        "snapshot $bin/boardctl --sim snapshot -o $folder/snapshot" \
        "run $bin/boardctl ${board[*]} run --for 1"
} | xargs -P "$jobs" -L 1 bash -c 'checked "$@"' checked
echo "valgrind: ${#programs[@]} test programs and 6 commands are clean"
