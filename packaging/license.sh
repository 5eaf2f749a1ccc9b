#!/usr/bin/env bash
# Puts the whole tree under a license: packaging/license.sh SPDX-IDENTIFIER TEXT
# Only the owner may decide this. TEXT is a file with the license's text, which becomes the file
# LICENSE. Each source gets a tag with the identifier, and the packages and recipes state it. Run
# the script again to change the license.
set -euo pipefail

(($# == 2)) || {
    echo "usage: packaging/license.sh SPDX-IDENTIFIER TEXT" >&2
    exit 2
}
name=$1
[[ $name =~ ^[A-Za-z0-9.+-]+$ ]] || {
    echo "license: '$name' is not an SPDX identifier (expected one such as MIT)" >&2
    exit 2
}
text=$(<"$2")
cd -- "$(dirname -- "$0")/.."
printf '%s\n' "$text" >LICENSE

# tag FILE BEGIN [END]: puts the tag, as a comment, into the first line. A line that the system or
# a browser must read first stays in front.
tag() {
    sed -i '1,3{/SPDX-License-Identifier/d}' "$1"
    local line="$2 SPDX-License-Identifier: $name${3+ $3}" at=1i
    [[ $(head -1 "$1") != '#!'* && $(head -1 "$1") != '#compdef'* && $(head -1 "$1") != '<!DOCTYPE'* ]] || at=1a
    sed -i "$at $line" "$1"
}

while IFS= read -r -d '' file; do
    case $file in
    fuzz/corpus/*) ;;
    *.h | *.cpp | *.h.in | *.cpp.in | *.js | *.go | *.dtso) tag "$file" // ;;
    *.css) tag "$file" '/*' '*/' ;;
    *.html) tag "$file" '<!--' '-->' ;;
    *.sh | *.py | *.cmake | *CMakeLists.txt | *.bash | *.fish | *.zsh | *.toml | *.in | *.conf | \
        *.bb | *.mk | packaging/debian/* | tests/board/init | dev | .ci/run)
        tag "$file" '#'
        ;;
    esac
done < <(git ls-files -z)

cat >packaging/copyright <<END
Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: boarddrivers

Files: *
Copyright: 2026 The boarddrivers authors
License: $name
$(sed 's/^$/./; s/^/ /' LICENSE)
END
checksum=$(md5sum LICENSE)
sed -i -e '/^LIC_FILES_CHKSUM/d' \
    -e "s|^LICENSE = .*|LICENSE = \"$name\"\nLIC_FILES_CHKSUM = \"file://LICENSE;md5=${checksum%% *}\"|" \
    packaging/yocto/recipes-support/boarddrivers/*.bb
sed -i -e "s|_LICENSE = .*|_LICENSE = $name|" -e 's|_LICENSE_FILES = .*|_LICENSE_FILES = LICENSE|' \
    packaging/buildroot/package/boarddrivers/boarddrivers.mk
echo "The tree is under $name now. Review the changes, and state the license in README.md."
