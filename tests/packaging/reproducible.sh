#!/usr/bin/env bash
# Builds the packages of a release build again, from a copy of the tree with newer files in another
# folder, with another umask and time zone, and compares both results byte for byte:
# tests/packaging/reproducible.sh BUILD
set -euo pipefail

build=$(realpath -- "$1")
source=$(realpath -- "$(dirname -- "$0")/../..")
copy=$build/second/copy-of-the-tree
log=$build/reproducible.log
packages=("$build"/packages/*deb)

fail() {
    echo "reproducible: $*" >&2
    exit 1
}

rm -rf "$build/second"
trap 'rm -rf "$build/second"' EXIT
umask 027
mkdir -p "$copy"
tar -C "$source" --exclude=./build --exclude=./.git -c . | tar -C "$copy" -x --touch
export TZ=Asia/Tokyo LC_ALL=C CCACHE_DISABLE=1
cd "$copy"
{
    cmake --preset release -DBOARD_BENCH=OFF &&
        cmake --build --preset release --parallel "$(nproc)" &&
        cd build/release && cpack
} >"$log" 2>&1 || fail "the copy does not build: $(tail -20 "$log")"
for package in "${packages[@]}"; do
    cmp "$package" "packages/${package##*/}" >&2 || fail "${package##*/} differs between two folders"
done
echo "reproducible build: ${#packages[@]} packages are the same from two folders"
