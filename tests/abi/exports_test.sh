#!/usr/bin/env bash
# Compares the exports of the built library with the record: tests/abi/exports_test.sh LIBRARY
set -euo pipefail

abi=$(dirname -- "$0")/../../abi
diff -u --label abi/exports.txt --label "$1" "$abi/exports.txt" <("$abi/exports.sh" "$1") || {
    echo "the exports have changed (+: new, -: gone); if that is meant: ./dev abi --update" >&2
    exit 1
}
