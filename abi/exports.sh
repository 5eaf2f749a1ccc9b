#!/usr/bin/env bash
# Prints the names that a built library exports, one per line. Omits names that the compiler derives
# from others: thunks, type information, the virtual tables of interfaces.
# usage: abi/exports.sh LIBRARY
set -euo pipefail

nm --dynamic --defined-only --demangle --format=posix --without-symbol-versions "$1" |
    sed -E -e 's/ ([A-Za-z]) [0-9a-f ]*$//' \
        -e '/^(BOARDDRIVERS_1$|.*thunk to |typeinfo |vtable for I[A-Z])/d' |
    LC_ALL=C sort -u
