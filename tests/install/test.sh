#!/usr/bin/env bash
# Installs a build tree into a folder and uses it from there as other projects would:
# tests/install/test.sh BUILD
set -euo pipefail

build=$(realpath -- "$1")
source=$(realpath -- "$(dirname -- "$0")/../..")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "install: $*" >&2
    exit 1
}

# expect TEXT COMMAND...: the command must succeed and print TEXT as a line.
expect() {
    local text=$1 out
    shift
    out=$("$@" 2>&1) || fail "failed: $*: $out"
    grep -qxF -- "$text" <<<"$out" || fail "$*: printed '$out' (expected the line '$text')"
}

# build_with FOLDER SOURCE OPTION...: configures and builds. Prints the output only on failure.
build_with() {
    local folder=$1 from=$2
    shift 2
    if ! cmake -S "$from" -B "$folder" -G Ninja "$@" >"$work/log" 2>&1 || ! cmake --build "$folder" >>"$work/log" 2>&1; then
        fail "$from does not build with $*: $(cat "$work/log")"
    fi
}

prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
libraries=$(dirname "$(find "$prefix" -name libboarddrivers.so.1)")
boardctl=$prefix/bin/boardctl
expect "boardctl 1.0.0" "$boardctl" --version
"$boardctl" sim create "$work/board" >/dev/null
image=$work/board/eeprom.bin
product="product abcd "

# The units must name the installed program. The trailing colon adds systemd's own units.
faults=$(SYSTEMD_UNIT_PATH=$prefix/lib/systemd/system: systemd-analyze verify --man=no boardctl.service \
    boardweb.service boardctl-metrics.service boardctl-metrics.timer boardctl-button-bridge@event0.service 2>&1 || echo failed)
[[ -z $faults ]] || fail "systemd rejects a unit: $faults"

# With CMake, which finds the library through the prefix alone.
build_with "$work/cmake" "$source/tests/install" -DCMAKE_PREFIX_PATH="$prefix"
expect "$product" "$work/cmake/consumer" "$image"

build_with "$work/example" "$source/examples/host" -DCMAKE_PREFIX_PATH="$prefix"

# With pkg-config.
read -ra flags <<<"$(PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --cflags --libs boarddrivers)"
g++ -std=c++17 -Wall -Wextra -Werror "$source/tests/install/consumer.cpp" -o "$work/consumer" "${flags[@]}"
expect "$product" "$work/consumer" "$image"

# Each installed header must compile alone.
for header in "$prefix"/include/boarddrivers/*.h "$prefix"/include/boarddrivers/framework/*.h; do
    g++ -std=c++17 -fsyntax-only -x c++ /dev/null -include "$header" \
        -I"$prefix/include/boarddrivers" -I"$prefix/include/boarddrivers/framework" ||
        fail "$(basename "$header") does not compile alone"
done

# A host that loads the library at run time.
LD_LIBRARY_PATH=$libraries expect "FAILED TO OPEN DEVICE '/sys/bus/i2c/devices/1-0050/eeprom'" "$work/cmake/loader"

# The library alone, built against a framework that is installed elsewhere.
framework=$work/framework
for component in framework framework-development; do
    cmake --install "$build" --prefix "$framework" --component "$component" >/dev/null
done
build_with "$work/alone" "$source" -DBOARD_PLATFORM_DIR="$framework"
cmake --install "$work/alone" --prefix "$work/apart" >/dev/null
[[ -z $(find "$work/apart" -name '*utility*') ]] || fail "the library alone also installs a framework"
build_with "$work/apart-cmake" "$source/tests/install" -DCMAKE_PREFIX_PATH="$work/apart"
# On a board the loader finds the framework in the default folders.
LD_LIBRARY_PATH=$(dirname "$(find "$framework" -name libutility.so)") \
    expect "$product" "$work/apart-cmake/consumer" "$image"
echo "installed copy: CMake, the example, pkg-config, headers, loading by name, a separate framework"
