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
# Two tests are left out. In one, the kernel lets a connection wait because no descriptor is left,
# but valgrind accepts and closes it. The other takes minutes; the address sanitizer runs it.
export GTEST_FILTER='-StatusServerTest.WaitsWithoutSpinningIfNoDescriptorIsLeft:LedPage.Agrees*'

# watched COMMAND...: becomes the command under valgrind. Fails if valgrind finds something. A test
# program keeps its own operators new and delete: some of their calls are inlined, so if valgrind
# replaced the operators, it would see only half of the calls.
watched() {
    exec valgrind --quiet --leak-check=full --errors-for-leak-kinds=definite,indirect,possible --error-exitcode=99 \
        --soname-synonyms=somalloc=nouserintercepts --fair-sched=yes "$@"
}

# checked NAME COMMAND...: runs the command under valgrind. Prints its output only if it fails.
checked() {
    local log=$folder/$1.log
    shift
    (watched "$@") >"$log" 2>&1 || {
        cat "$log" >&2
        echo "valgrind: $* failed" >&2
        return 1
    }
}
export -f watched checked
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

# Hosts a board, asks the host, and tells it to end.
mkfifo "$folder/printed"
watched "$bin/boardctl" "${board[@]}" run >"$folder/printed" 2>"$folder/host.log" &
host=$! line=
exec 3<"$folder/printed"
until [[ $line == ready ]]; do read -r line <&3; done
for question in status "status --format json" "status --format metrics" "leds why"; do
    read -ra words <<<"$question"
    checked question "$bin/boardctl" "${board[@]}" "${words[@]}"
done
kill -TERM "$host"
cat <&3 >/dev/null
wait "$host" || {
    cat "$folder/host.log" >&2
    echo "valgrind: the host that was asked failed" >&2
    exit 1
}
echo "valgrind: ${#programs[@]} test programs, 6 commands and a host with 4 clients are clean"
