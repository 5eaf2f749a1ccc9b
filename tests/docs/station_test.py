#!/usr/bin/env python3
"""Programs units with the station of docs/station.md. Five are faulty, each in its own way.

usage: tests/docs/station_test.py BOARDCTL UNITS [SHIM]

SHIM is lib/libfaults_shim.so of a build; with it, the power fails while one unit is written.
"""
import collections
import hashlib
import json
import os
import pathlib
import subprocess
import sys
import tempfile

import pages

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs/station.md"
PROFILE = 'simulated = true\n[descriptor]\ndevice = "jig"\nsize = 512\n'
BLANK = b"\xff" * 512
MISSING, READ_ONLY, USED, FOREIGN, FORGETS, CUT = 3, 5, 8, 12, 15, 19
# The station calls boardctl through this script. It erases the last digit of one unit's serial
# number after the write, and lets the power fail after 20 bytes if CUT_BY names a shim.
WRAPPER = """#!/bin/sh
case $* in
*--record*)
    ([ -z "$CUT_BY" ] || export LD_PRELOAD="$CUT_BY" FAULTS_PLAN="pwrite 1 1020" FAULTS_TRACE=/dev/null
    exec {boardctl} "$@")
    status=$?
    [ "$(readlink jig)" != units/{weak} ] || printf '\\377' | dd of=jig bs=1 seek=33 conv=notrunc status=none
    exit $status ;;
esac
exec {boardctl} "$@"
"""


def image(number, product=0x1234ABCD):
    tags = [(45, product.to_bytes(4, "big")), (1, bytes((2, 0, 0, 0, 0x10, number, 0, 0))),
            (5, b"UNIT-%05d" % number), (0x800E, (64).to_bytes(4, "big")), (0, b"")]
    chunks = [tag.to_bytes(2, "big") + (len(data) + 4).to_bytes(2, "big") + data for tag, data in tags]
    return b"".join(chunks).ljust(len(BLANK), b"\xff")


def main(boardctl, units, shim=""):
    as_found = {number: BLANK for number in range(1, int(units) + 1)}
    as_found.update({10: bytes(512), USED: image(USED - 1), FOREIGN: image(FOREIGN, 0x12340001)})
    outcome = {
        MISSING: (1, "can't be read"), READ_ONLY: (1, "can't be written"), USED: (3, 'is "UNIT-00007"'),
        FOREIGN: (3, "another product: ProductID at 0: is 12340001"),
        FORGETS: (1, "does not keep what was written: Tag5 at 20: is 554e49542d30303031ff")}
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for step in pages.Page(PAGE).steps:
            if isinstance(step, tuple):
                (folder / step[0]).write_text(step[1], encoding="utf-8")
        (folder / "board.toml").write_text(PROFILE, encoding="utf-8")
        (folder / "boardctl").write_text(WRAPPER.format(boardctl=boardctl, weak=FORGETS), encoding="utf-8")
        (folder / "boardctl").chmod(0o755)
        (folder / "units").mkdir()
        unit = {number: folder / f"units/{number}" for number in as_found}
        for number in as_found.keys() - {MISSING}:
            unit[number].write_bytes(as_found[number])
        unit[READ_ONLY].chmod(0o444)
        # Without this capability, not even root can write a read-only file.
        drop = ["setpriv", "--bounding-set=-dac_override", "--inh-caps=-dac_override"] if os.geteuid() == 0 else []

        def program(number, cut_by=""):
            environment = dict(os.environ, PATH=f"{folder}:{os.environ['PATH']}", BOARDCTL_BOARD="board.toml",
                               CUT_BY=cut_by)
            (folder / "jig").unlink(missing_ok=True)
            (folder / "jig").symlink_to(f"units/{number}")
            return subprocess.run([*drop, "sh", "station.sh", f"UNIT-{number:05}", f"02:00:00:00:10:{number:02x}"],
                                  cwd=folder, env=environment, capture_output=True, text=True, check=False)

        def expect(is_met, *what):
            if not is_met:
                sys.exit("\n".join(map(str, what)))

        for number in as_found:
            did = "programmed"
            if number == CUT and shim:
                run, left, did = program(number, shim), unit[number].read_bytes(), "repaired"
                expect(run.returncode == 1 and left == image(number)[:20] + BLANK[20:], "not cut:", run, left)
            run = program(number)
            status, message = outcome.get(number, (0, f"PASS UNIT-{number:05}: {did}\n"))
            expect(run.returncode == status and message in run.stdout, f"expected {status} and {message}", run)
        for number in as_found.keys() - {MISSING, FORGETS}:
            expected = as_found[number] if number in outcome else image(number)
            expect(unit[number].read_bytes() == expected, f"unit {number} holds", unit[number].read_bytes())

        written = collections.Counter()
        for line in map(json.loads, (folder / "record.log").read_text(encoding="utf-8").splitlines()):
            number = int(line["serial"].removeprefix("UNIT-"))
            address = {"mac": f"02:00:00:00:10:{number:02X}", "interface": 0}
            checksum = None if number == READ_ONLY else hashlib.sha256(image(number)).hexdigest()
            expect(line["addresses"] == [address] and line["sha256_after"] == checksum, "wrong record", line)
            written[number, line["result"]] += 1
        expect(written == collections.Counter(
            [(READ_ONLY, "failed"), *((number, "written") for number in as_found.keys() - outcome.keys() | {FORGETS})]),
            "the record has", written)
    print(f"{len(as_found)} units programmed, {len(outcome)} faults found")


if __name__ == "__main__":
    main(*sys.argv[1:])
