#!/usr/bin/env bash
# debian-armhf.sh FOLDER PACKAGE...: downloads Debian packages for 32-bit ARM and unpacks them into
# FOLDER, which then holds exactly these packages. If anything fails, FOLDER is unchanged. Does
# nothing if FOLDER holds them already. Does not install anything or change the machine's package
# state.
#
# A package without files of its own stands for the packages that it depends on: linux-image-armmp,
# for example, depends on the package of the newest kernel. Other dependencies must be named.
set -euo pipefail

: "${2:?usage: cmake/debian-armhf.sh FOLDER PACKAGE...}"
folder=$(realpath --canonicalize-missing -- "$1")
shift
part=$folder.part
apt=$part/apt
log=$folder.log

# Locks the log, so that only one run works on the folder.
mkdir -p "$(dirname -- "$folder")"
exec {lock}>>"$log"
flock "$lock"
if [[ -e $folder/packages && $(<"$folder/packages") == "$*" ]]; then
    exit 0
fi
: >"$log"

fail() {
    tail -5 "$log" >&2
    echo "debian-armhf: $* (full log: $log)" >&2
    exit 1
}

apt_armhf() {
    LC_ALL=C apt-get -q -o APT::Architecture=armhf -o APT::Architectures::=armhf -o Dir::State="$apt/state" \
        -o Dir::State::Lists="$apt/lists" -o Dir::State::status="$apt/status" -o Dir::Cache="$apt/cache" \
        -o Dir::Etc::SourceList="$apt/sources.list" -o Dir::Etc::SourceParts=/dev/null \
        -o Dir::Etc::Preferences=/dev/null -o Dir::Etc::PreferencesParts=/dev/null \
        -o Acquire::Languages=none -o Acquire::Retries=3 -o APT::Sandbox::User=root "$@" </dev/null >>"$log" 2>&1
}

# Prints the package sources of this machine as lines "MIRROR SUITE", the running release first.
# Asks apt for them, because source lists have several formats.
sources() {
    local release
    release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
    LC_ALL=C apt-get update --print-uris -o Dir::State::Lists="$apt/none" 2>>"$log" |
        sed -n "s|^'\(.*\)/dists/\([^/]*\)/InRelease'.*|\1 \2|p" | grep -vE -- '-(updates|security|backports)$' |
        awk -v release="$release" '!seen[$0]++ { if ($2 == release) print; else others = others $0 "\n" }
            END { printf "%s", others }'
}

# Uses only one release: from two releases, apt would choose the packages of the newer one.
find_source() {
    local keys=/usr/share/keyrings/debian-archive-keyring.gpg mirror suite
    while read -r mirror suite; do
        echo "deb $([[ ! -e $keys ]] || echo "[signed-by=$keys]") $mirror $suite main" >"$apt/sources.list"
        if apt_armhf update --error-on=any && apt_armhf download --print-uris "$@"; then
            return
        fi
    done < <(sources)
    fail "no mirror in this machine's apt sources can be reached and has these packages for armhf: $*"
}

has_files() { dpkg-deb --contents "$1" | grep -vE '^d| \./usr/share/(doc|bug|lintian)/' >/dev/null; }

rm -rf "$part" # left by an interrupted run
mkdir -p "$apt"/{state,lists,none,cache/archives}/partial "$part"/{packages,root}
: >"$apt/status"
find_source "$@"
cd -- "$part/packages"
apt_armhf download "$@" || fail "could not download $*"
for package in *.deb; do
    if ! has_files "$package"; then
        read -ra others < <(dpkg-deb --field "$package" Depends | sed 's/([^)]*)//g; s/|[^,]*//g; s/,/ /g')
        apt_armhf download "${others[@]}" || fail "could not download what $package depends on: ${others[*]}"
    fi
done
for package in *.deb; do
    dpkg-deb --extract "$package" "$part/root"
done
echo "$*" >"$part/root/packages"
rm -rf "$folder"
mv "$part/root" "$folder"
rm -rf "$part"
