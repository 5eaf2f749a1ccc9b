#!/usr/bin/env python3
"""Kills boardctl with SIGKILL again and again while it writes descriptors, and checks what is left:
a file must hold the old or the new image whole, and the next run must repair a device.

usage: tests/faults/kill_writes.py BOARDCTL SHIM [ROUNDS [SEED]]

SHIM is lib/libfaults_shim.so of a build. Every second round kills at a random moment; the others
kill at a random call, in a write after a random number of bytes, because the system completes a
short write to a file even if the program is killed meanwhile.
"""
import collections
import contextlib
import os
import pathlib
import random
import subprocess
import sys
import tempfile
import time

KILLED = 1000  # as in Faults.h
CALLS = {"pwrite": 1, "write": 4, "fsync": 6, "rename": 2, "close": 20, "open": 12, "read": 12}


def image(serial, size):
    chunks = b"\x00\x2d\x00\x08" + serial.to_bytes(4, "big")
    text = f"UNIT-{serial:06}".encode().ljust(size, b"x")
    return chunks + b"\x00\x05" + (len(text) + 4).to_bytes(2, "big") + text + b"\x00\x00\x00\x04"


def main():
    boardctl, shim = (str(pathlib.Path(word).resolve()) for word in sys.argv[1:3])
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 1000
    seed = int(sys.argv[4]) if len(sys.argv) > 4 else random.randrange(1 << 32)
    chance = random.Random(seed)
    counts = collections.Counter()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        environment = dict(os.environ, XDG_STATE_HOME=f"{name}/state", FAULTS_TRACE="/dev/null")
        for board in ("board", "reference"):
            subprocess.run([boardctl, "sim", "create", folder / board], check=True, stdout=subprocess.DEVNULL)
        started = time.monotonic()
        for _ in range(5):
            subprocess.run([boardctl, "bd", "dump", f"{name}/board/eeprom.bin"], check=True, stdout=subprocess.DEVNULL)
        span = (time.monotonic() - started) / 5 * 3
        for number in range(rounds):
            is_device = chance.random() < 0.5
            # What the command makes of the old image if nobody kills it is in the other one.
            target, reference = (folder / board / ("eeprom.bin" if is_device else "image")
                                 for board in ("board", "reference"))
            where, elsewhere = (["--board", f"{path.parent}/board.toml"] if is_device else ["-i", str(path)]
                                for path in (target, reference))
            old = image(number, 2 * chance.randrange(10, 100)).ljust(512, b"\xff")
            target.write_bytes(old)
            (folder / "new").write_bytes(image(number + 1, 2 * chance.randrange(10, 100)))
            if chance.random() < 0.5:
                words = ["bd", "write", f"{name}/new", "--fill", "FF"]
            else:
                words = ["bd", "put", f"5=text:UNIT-{number + 1:06}", f"ProductID=u32:{number + 1}"]
            call = [boardctl, *words, "-y", "-q", *where]
            reference.write_bytes(old)
            subprocess.run([boardctl, *words, "-y", "-q", *elsewhere], check=True, env=environment)
            new = reference.read_bytes()
            for _ in range(chance.choice((1, 1, 1, 2, 5))):  # repairs may be killed too
                if number % 2:
                    called = chance.choice(["pwrite", *CALLS] if chance.random() < 0.5 else ["pwrite"])
                    plan = f"{called} {chance.randint(1, CALLS[called])} {KILLED + chance.randrange(200)}"
                    subprocess.run(call, env=dict(environment, LD_PRELOAD=shim, FAULTS_PLAN=plan),
                                   stderr=subprocess.DEVNULL, check=False)
                else:
                    with subprocess.Popen(call, env=environment, stderr=subprocess.DEVNULL) as process:
                        with contextlib.suppress(subprocess.TimeoutExpired):
                            process.wait(chance.random() * span)
                        process.kill()
            left = target.read_bytes()
            state = "old" if left == old else "new" if left == new else "torn"
            counts[f"{'device' if is_device else 'file'} {state}"] += 1
            if state == "torn" and not is_device:
                sys.exit(f"seed {seed}, round {number}: the file is neither old nor new after {call}")
            again = subprocess.run(call, env=environment, capture_output=True, text=True, check=False)
            if again.returncode or target.read_bytes() != new:
                sys.exit(f"seed {seed}, round {number}: not repaired by {call}: {again.stderr}")
            if state == "torn" and "interrupted" not in again.stderr:
                sys.exit(f"seed {seed}, round {number}: the repair was not mentioned: {again.stderr}")
        left = [path.name for path in (folder / "state/boardctl").iterdir() if path.name.startswith("unfinished")]
        if left:
            sys.exit(f"seed {seed}: journals are left: {left}")
    print(f"{rounds} rounds, seed {seed}: " + ", ".join(f"{count} {what}" for what, count in sorted(counts.items())))


if __name__ == "__main__":
    main()
