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

# With CMake, which finds the library through the prefix alone. The flags are those of careful
# projects; -Weffc++ must find nothing in the headers.
strict="-fno-exceptions -fno-rtti -O2 -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -Weffc++ -Werror"
build_with "$work/cmake" "$source/tests/install" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_FLAGS="$strict"
expect "$product" "$work/cmake/consumer" "$image"
cmake --install "$work/cmake" --prefix "$prefix" >/dev/null
expect "$product" "$prefix/bin/consumer" "$image"

build_with "$work/example" "$source/examples/host" -DCMAKE_PREFIX_PATH="$prefix"

# With pkg-config.
read -ra flags <<<"$(PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --cflags --libs boarddrivers)"
[[ ${flags[*]} != *rpath* ]] || fail "pkg-config gives programs a search path: ${flags[*]}"
g++ -std=c++17 -Wall -Wextra -Werror "$source/tests/install/consumer.cpp" -o "$work/consumer" "${flags[@]}"
LD_LIBRARY_PATH=$libraries expect "$product" "$work/consumer" "$image"
echo "installed: CMake with strict flags, the installed consumer, the example, pkg-config"

# If the whole prefix is moved, the installed consumer still finds the libraries beside it.
cp -a "$prefix" "$work/moved"
mv "$prefix" "$work/away"
expect "$product" "$work/moved/bin/consumer" "$image"
mv "$work/away" "$prefix"
echo "copied root: the installed consumer runs"

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
# Here, unlike on a board, the framework is not in a folder where the loader looks by default.
LD_LIBRARY_PATH=$(dirname "$(find "$framework" -name libboarddrivers-utility.so)") \
    expect "$product" "$work/apart-cmake/consumer" "$image"
grep -qx 'CMAKE_BUILD_TYPE:STRING=RelWithDebInfo' "$work/alone/CMakeCache.txt" ||
    fail "a build without a build type is not optimized"
echo "headers alone, loading by name, a separate framework"

# Without shared libraries.
build_with "$work/archives" "$source" -DBUILD_SHARED_LIBS=OFF -DBOARD_TOOLS=OFF
cmake --install "$work/archives" --prefix "$work/static" >/dev/null
build_with "$work/static-cmake" "$source/tests/install" -DCMAKE_PREFIX_PATH="$work/static"
expect "$product" "$work/static-cmake/consumer" "$image"
! readelf --dynamic "$work/static-cmake/consumer" | grep boarddrivers || fail "the static build needs a shared library"
echo "static build: the consumer contains the library"

# As a part of another project.
build_with "$work/whole" "$source/tests/install/subproject" -DBOARDDRIVERS_SOURCE="$source"
expect "$product" "$work/whole/consumer" "$image"
cmake --install "$work/whole" --prefix "$work/whole-installed" >/dev/null
[[ ! -e $work/whole-installed ]] || fail "a project that contains the library installs it unasked"
echo "subproject: the library alone is built"
