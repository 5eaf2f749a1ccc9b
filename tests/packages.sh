#!/usr/bin/env bash
# Builds the Debian packages of a release build, installs them into a separate root and uses them:
# tests/packages.sh BUILD [EMULATOR...]
set -euo pipefail

build=$(realpath -- "$1")
emulator=("${@:2}")
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT

fail() {
    echo "packages: $*" >&2
    exit 1
}

# unpack PACKAGE FOLDER
unpack() { dpkg-deb --raw-extract "$build/packages/$1"_*.*deb "$root/$2"; }

rm -rf "$build/packages"
(cd "$build" && cpack) >"$build/cpack.log" 2>&1 || fail "cpack failed: $(cat "$build/cpack.log")"
packages=("$build"/packages/*.deb)
((${#packages[@]} == 4)) ||
    fail "${#packages[@]} packages (expected libboarddrivers1, libboarddrivers-dev, boardctl, boardweb)"

# Ignores lintian's warnings: some, such as a missing bug number, apply only to packages in Debian.
lintian --allow-root --fail-on error "${packages[@]}" >"$build/lintian.log" 2>&1 ||
    fail "lintian found errors: $(cat "$build/lintian.log")"

# The root contains only these packages. They use the libraries of this machine or of the emulator.
mkdir -p "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/info"
touch "$root/var/lib/dpkg/status"
dpkg --root="$root" --force-not-root --force-depends --force-architecture --force-script-chrootless --no-triggers \
    --log="$root/log" --install "${packages[@]}" >"$build/dpkg.log" 2>&1 || fail "dpkg failed: $(cat "$build/dpkg.log")"
report=$("${emulator[@]}" "$root/usr/bin/boardctl" --sim info) || fail "boardctl info failed"
grep -q MacAddress <<<"$report" || fail "boardctl info printed '$report'"
report=$("${emulator[@]}" "$root/usr/bin/boardweb" --version) || fail "boardweb --version failed"
[[ $report == 'boardweb '* ]] || fail "boardweb --version printed '$report'"
for page in man1/boardctl.1 man1/boardweb.1 man5/board.toml.5; do
    warnings=$(gzip -dc "$root/usr/share/man/$page.gz" | man --warnings -l - 2>&1 >/dev/null || echo failed)
    [[ -z $warnings ]] || fail "man rejects the manual page $page: $warnings"
done

# A unit must name the program of this installation.
sed -n 's/^Exec[A-Za-z]*=-\{0,1\}\([^ ]*\) .*/\1/p' "$root"/usr/lib/systemd/system/*.service >"$root/programs"
while read -r program; do
    [[ -x $root$program ]] || fail "a unit starts $program, which is not installed"
done <"$root/programs"

library=$(find "$root" -name libboarddrivers.so.1)
for file in "${library%.1}" "$root/usr/include/boarddrivers/CBoardDescr.h" \
    "$root/etc/boarddrivers" "$root/usr/lib/tmpfiles.d/boardctl.conf" "$root/usr/share/doc/boardctl/board-guide.md" "$root/usr/share/boarddrivers/tags.schema.json" \
    "$root/usr/share/bash-completion/completions/boardctl" \
    "$root/usr/share/zsh/vendor-completions/_boardctl" \
    "$root/usr/share/fish/vendor_completions.d/boardctl.fish" \
    "$root/usr/lib/systemd/system/boardctl.service.d/boardweb.conf" \
    "$root/usr/share/bash-completion/completions/boardweb" \
    "$root/usr/share/zsh/vendor-completions/_boardweb"; do
    [[ -e $file ]] || fail "there is no $file"
done
grep -q '^boarddrivers:' "$root/etc/group" || fail "the package boardweb did not create the group boarddrivers"
for file in "$library" "$root"/usr/bin/board{ctl,web}; do
    headers=$(readelf --wide --program-headers --dynamic --dyn-syms "$file")
    for mark in GNU_RELRO BIND_NOW __stack_chk_fail _chk@; do # the last: functions that check their buffers
        grep -q -- "$mark" <<<"$headers" || fail "$(basename "$file") is not hardened: no $mark"
    done
    grep -Eq 'GNU_STACK .* RW +0x' <<<"$headers" || fail "$(basename "$file") is not hardened: its stack can be executed"
done
for program in boardctl boardweb; do
    readelf --file-header "$root/usr/bin/$program" | grep -q 'Type: *DYN' || fail "$program is not position-independent"
done

# Debug information is in separate packages, filed under the build ID of the installed program.
unpack boardctl-dbgsym debug
build_id=$(readelf --notes "$root/usr/bin/boardctl" | sed -n 's/.*Build ID: //p')
debug=$root/debug/usr/lib/debug/.build-id/${build_id:0:2}/${build_id:2}.debug
strings --all "$debug" | grep ^/usr/src/boarddrivers- >/dev/null ||
    fail "boardctl-dbgsym has no debug information of boardctl"

# Packages that use the library depend on this version or a later one. A trigger of dpkg calls
# ldconfig, so this package must not.
unpack libboarddrivers1 library
[[ $(awk '{ print $2, $3, $4, $5 }' "$root/library/DEBIAN/shlibs" | sort -u) == "1 libboarddrivers1 (>= "*")" ]] ||
    fail "shlibs: $(<"$root/library/DEBIAN/shlibs")"
[[ ! -e $root/library/DEBIAN/postinst ]] || fail "libboarddrivers1 calls ldconfig"

# Boards have little flash, so the sum of text, data and bss has a limit.
bytes=$(size "$library" | awk 'NR == 2 { print $4 }')
[[ ${packages[*]} != *_armhf.deb* ]] || ((bytes <= 96 * 1024)) ||
    fail "libboarddrivers.so has $bytes bytes (expected at most 98304)"
echo "${packages[*]##*/}; libboarddrivers.so has $bytes bytes"
