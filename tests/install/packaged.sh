#!/usr/bin/env bash
# Builds a program against the Debian packages, and runs it with only these packages and their
# dependencies installed: tests/install/packaged.sh PACKAGES [EMULATOR...]
#
# Packages for this machine are installed into a minimal Debian root, which only root can make.
# Packages for ARM are unpacked and serve as a sysroot, and the program runs in the emulator.
set -euo pipefail

packages=$(realpath -- "$1")
emulator=("${@:2}")
source=$(realpath -- "$(dirname -- "$0")")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root

fail() {
    echo "packaged: $*" >&2
    exit 1
}

# compile COMPILER: builds the program into the root.
compile() {
    local flags
    read -ra flags <<<"$(PKG_CONFIG_PATH=$(dirname "$(find "$root" -name boarddrivers.pc)") \
        pkg-config --cflags --libs boarddrivers)"
    "$1" -std=c++17 "$source/consumer.cpp" -o "$root/consumer" "${flags[@]}"
}

expect_product() {
    local out
    out=$("$@" 2>&1) || fail "$* failed: $out"
    [[ $out == "product abcd " ]] || fail "$*: printed '$out'"
}

if ((${#emulator[@]} > 0)); then
    mkdir "$root"
    for package in "$packages"/{libboarddrivers1,libboarddrivers-dev,boardctl}_*.deb; do
        dpkg-deb -x "$package" "$root"
    done
    compile arm-linux-gnueabihf-g++
    "${emulator[@]}" "$root/usr/bin/boardctl" sim create "$root/board" >/dev/null
    expect_product "${emulator[@]}" -E LD_LIBRARY_PATH="$(dirname "$(find "$root" -name libboarddrivers.so.1)")" \
        "$root/consumer" "$root/board/eeprom.bin"
    echo "sysroot: a cross-built program runs with the packages"
    exit 0
fi

if ((EUID != 0)); then
    echo "minimal root: skipped: only root can make one"
    exit 0
fi
# Uses the package sources of this machine.
release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
# shellcheck disable=SC2016 # apt fills these in
apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' |
    sort -u >"$work/sources"
mmdebstrap --variant=essential --include=libstdc++6 "$release" "$root" - \
    <"$work/sources" >"$work/log" 2>&1 || fail "no minimal root: $(tail -5 "$work/log")"
# dpkg fails if a dependency is missing. The root has only essential packages and libstdc++.
mkdir "$root/packages"
cp "$packages"/{libboarddrivers1,libboarddrivers-dev,boardctl}_*.deb "$root/packages"
chroot "$root" sh -c 'dpkg --install /packages/*.deb' >"$work/log" 2>&1 || fail "dpkg failed: $(cat "$work/log")"
compile g++
chroot "$root" boardctl sim create /board >/dev/null
expect_product chroot "$root" /consumer /board/eeprom.bin
echo "minimal root: a program and boardctl run with the packages and their dependencies alone"
