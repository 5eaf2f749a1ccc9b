#!/usr/bin/env bash
# Prints what a built library exports, one name per line. Omits names that follow from the others:
# thunks, types, interface tables.
# usage: abi/exports.sh LIBRARY
set -euo pipefail

nm --dynamic --defined-only --demangle --format=posix --without-symbol-versions "$1" |
    sed -E -e 's/ ([A-Za-z]) [0-9a-f ]*$//' \
        -e '/^(BOARDDRIVERS_1$|.*thunk to |typeinfo |vtable for I[A-Z])/d' |
    LC_ALL=C sort -u
