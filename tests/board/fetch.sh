#!/usr/bin/env bash
# fetch.sh FOLDER: downloads Debian's kernel for 32-bit ARM and a static shell and unpacks them into
# FOLDER/system, unless they are there already. Installs nothing and does not change the machine's
# package state.
set -euo pipefail
PATH=$PATH:/usr/sbin:/sbin

: "${1:?usage: tests/board/fetch.sh FOLDER}"
mkdir -p "$1"
folder=$(cd -- "$1" && pwd)
[[ ! -e $folder/system ]] || exit 0
apt=$folder/apt
log=$folder/fetch.log
: >"$log"

fail() {
    tail -5 "$log" >&2
    echo "board: $* (all of it is in $log)" >&2
    exit 1
}

apt_armhf() {
    LC_ALL=C apt-get -q -o APT::Architecture=armhf -o APT::Architectures::=armhf -o Dir::State="$apt/state" \
        -o Dir::State::Lists="$apt/lists" -o Dir::State::status="$apt/status" -o Dir::Cache="$apt/cache" \
        -o Dir::Etc::SourceList="$apt/sources.list" -o Dir::Etc::SourceParts=/dev/null \
        -o Dir::Etc::Preferences=/dev/null -o Dir::Etc::PreferencesParts=/dev/null \
        -o Acquire::Languages=none -o Acquire::Retries=3 -o APT::Sandbox::User=root "$@" </dev/null >>"$log" 2>&1
}

# The package sources of this machine as lines "MIRROR SUITE", the running release first. Asks apt,
# because source lists have several formats.
sources() {
    local release
    release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
    LC_ALL=C apt-get update --print-uris -o Dir::State::Lists="$apt/none" 2>>"$log" |
        sed -n "s|^'\(.*\)/dists/\([^/]*\)/InRelease'.*|\1 \2|p" | grep -vE -- '-(updates|security|backports)$' |
        awk -v release="$release" '!seen[$0]++ { if ($2 == release) print; else others = others $0 "\n" }
            END { printf "%s", others }'
}

# Uses one release only: of two, apt would choose the kernel of the newer one.
find_source() {
    local keys=/usr/share/keyrings/debian-archive-keyring.gpg mirror suite
    while read -r mirror suite; do
        echo "deb $([[ ! -e $keys ]] || echo "[signed-by=$keys]") $mirror $suite main" >"$apt/sources.list"
        if apt_armhf update --error-on=any && apt_armhf download --print-uris linux-image-armmp; then
            return
        fi
    done < <(sources)
    fail "none of the mirrors in this machine's apt sources can be reached and has Debian's packages for armhf"
}

rm -rf "$folder/packages" # of an interrupted run
mkdir -p "$apt"/{state,lists,none,cache/archives}/partial "$folder/packages"
: >"$apt/status"
find_source
cd -- "$folder/packages"
apt_armhf download linux-image-armmp busybox-static || fail "could not download"
# The first package only depends on the one with the newest kernel.
image=$(dpkg-deb -f linux-image-armmp_*.deb Depends | grep -o 'linux-image-[0-9][^ ,]*-armmp') ||
    fail "linux-image-armmp names no kernel it depends on"
apt_armhf download "$image" || fail "could not download $image"

rm -rf "$folder/system.part"
dpkg-deb -x "$image"_*.deb "$folder/system.part"
dpkg-deb -x busybox-static_*.deb "$folder/system.part"
depmod -b "$folder/system.part" "${image#linux-image-}"
# A folder with the name `system` is complete.
mv "$folder/system.part" "$folder/system"
rm -rf "$folder/packages" "$apt"
