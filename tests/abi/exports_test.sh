#!/usr/bin/env bash
# Compares what the built library exports with what is meant: tests/abi/exports_test.sh LIBRARY
set -euo pipefail

abi=$(dirname -- "$0")/../../abi
diff -u --label abi/exports.txt --label "$1" "$abi/exports.txt" <("$abi/exports.sh" "$1") || {
    echo "the exports have changed (+: new, -: gone); if that is meant: ./dev abi --update" >&2
    exit 1
}
