#!/usr/bin/env bash
# Installs a build tree into a folder and uses it from there as others would: tests/install/test.sh BUILD
set -euo pipefail

build=$(realpath -- "$1")
source=$(realpath -- "$(dirname -- "$0")/../..")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "install: $*" >&2
    exit 1
}

# expect TEXT COMMAND...: the command succeeds and prints the line.
expect() {
    local text=$1 out
    shift
    out=$("$@" 2>&1) || fail "failed: $*: $out"
    grep -qxF -- "$text" <<<"$out" || fail "$*: printed '$out' (expected the line '$text')"
}

# build_with FOLDER SOURCE OPTION...: configures and builds; what it prints matters only where it fails.
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

# CMake, found by the prefix alone.
build_with "$work/cmake" "$source/tests/install" -DCMAKE_PREFIX_PATH="$prefix"
expect "$product" "$work/cmake/consumer" "$image"

# The example, by the guide that explains it.
build_with "$work/example" "$source/examples/host" -DCMAKE_PREFIX_PATH="$prefix"
guide=$(/usr/bin/python3 "$source/tests/docs/pages.py" --program "boardctl=$boardctl" \
    --program "board-host=$work/example/board-host" "$source/docs/host-guide.md") || fail "$guide"

# pkg-config.
read -ra flags <<<"$(PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --cflags --libs boarddrivers)"
g++ -std=c++17 -Wall -Wextra -Werror "$source/tests/install/consumer.cpp" -o "$work/consumer" "${flags[@]}"
expect "$product" "$work/consumer" "$image"

# Every header alone, as installed.
for header in "$prefix"/include/boarddrivers/*.h "$prefix"/include/boarddrivers/framework/*.h; do
    g++ -std=c++17 -fsyntax-only -x c++ /dev/null -include "$header" \
        -I"$prefix/include/boarddrivers" -I"$prefix/include/boarddrivers/framework" ||
        fail "$(basename "$header") does not compile alone"
done

# A host that loads the library. The EEPROM has one path on every board, so the host gets a /sys of its own.
apart=(unshare --mount)
((EUID == 0)) || apart+=(--map-root-user)
loading="loading by name"
if "${apart[@]}" mount -t tmpfs sys /sys 2>/dev/null; then
    # shellcheck disable=SC2016 # expanded by the inner shell
    LD_LIBRARY_PATH=$libraries expect "$product" "${apart[@]}" bash -c '
        mount -t tmpfs sys /sys
        mkdir -p /sys/bus/i2c/devices/1-0050
        cp "$0" /sys/bus/i2c/devices/1-0050/eeprom
        exec "$1"' "$image" "$work/cmake/loader"
else
    loading="NOT loading by name: this machine gives no folder tree of one's own"
fi

# The library alone, against a framework that is installed somewhere else.
framework=$work/framework
for component in framework framework-development; do
    cmake --install "$build" --prefix "$framework" --component "$component" >/dev/null
done
build_with "$work/alone" "$source" -DBOARD_PLATFORM_DIR="$framework"
cmake --install "$work/alone" --prefix "$work/apart" >/dev/null
[[ -z $(find "$work/apart" -name '*utility*') ]] || fail "the library alone brings a framework along"
build_with "$work/apart-cmake" "$source/tests/install" -DCMAKE_PREFIX_PATH="$work/apart"
# On a board the framework is where the system looks.
LD_LIBRARY_PATH=$(dirname "$(find "$framework" -name libutility.so)") \
    expect "$product" "$work/apart-cmake/consumer" "$image"
echo "installed copy: CMake, the example, pkg-config, headers, $loading, a framework apart"
