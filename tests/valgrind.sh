#!/usr/bin/env bash
# Runs the test programs of a build, and commands of boardctl that read, write and host, under valgrind: no invalid
# access, no use of what was never written, nothing lost at the end. boardctl's own tests are left out: they start
# programs by the hundred, and valgrind would watch only what starts them.
set -euo pipefail

if (($# > 1)); then
    echo "usage: tests/valgrind.sh [BUILD]   (BUILD: a build folder, build/host without it)" >&2
    exit 2
fi
bin=$(realpath -- "${1-"$(dirname -- "$0")/../build/host"}")/bin
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export GTEST_BRIEF=1

# checked NAME COMMAND...: shows what the command prints, a log called NAME meanwhile, where it fails. A test program's
# own operators new and delete are left to it: half of them would be inlined before they could be replaced.
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

# The LED pipe has one path on every machine: where no program gets a /tmp of its own, they take turns.
jobs=$(nproc)
unshare -m true 2>/dev/null || jobs=1

"$bin/boardctl" sim create "$folder/board" >/dev/null
board=(--board "$folder/board/board.toml")
programs=()
for program in "$bin"/*_tests; do
    case ${program##*/} in
    boardctl_tests | boardctl_faults_tests | hosted_faults_tests) ;;
    *) programs+=("$program") ;;
    esac
done
((${#programs[@]} > 0)) || {
    echo "valgrind: no test programs in $bin" >&2
    exit 1
}

{
    for program in "${programs[@]}"; do
        printf '%s\n' "$(basename "$program") $program"
    done
    printf '%s\n' "info $bin/boardctl info" "metrics $bin/boardctl info --format metrics" \
        "dump $bin/boardctl bd dump $folder/board/eeprom.bin" \
        "set $bin/boardctl ${board[*]} bd set -y 0x800E=uint:121" \
        "preview $bin/boardctl leds preview --ticks 20" \
        "run $bin/boardctl ${board[*]} run --for 1"
} | xargs -P "$jobs" -L 1 bash -c 'checked "$@"' checked
echo "valgrind: ${#programs[@]} test programs and 6 commands are clean"
