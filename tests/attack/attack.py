#!/usr/bin/env python3
"""Attacks boardctl with kills, failing calls, full disks, floods and another user, and counts what is lost.

usage: attack.py BOARDCTL SECONDS [--seed N] [--only ROUND]... [--settings]
Every round runs at least once. Rounds that this machine or user does not allow are skipped and listed.
--settings lets a round briefly switch fs.protected_symlinks off, for the whole machine.
"""
import argparse
import os
import pathlib
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import edits
import hosts
import parts
import strangers
from hosting import take_tmp

# The function of each round, the seconds that it runs in one turn, and what it needs.
ROUNDS = {
    "kills": (edits.kills, 6, ""),
    "errors": (edits.errors, 2, "strace"),
    "full-disks": (edits.full_disks, 0.3, ""),
    "editors": (edits.editors, 1, ""),
    "readers": (edits.readers, 1, ""),
    "floods": (hosts.floods, 2, "tmp"),
    "starts": (hosts.starts, 2, "tmp"),
    "successions": (hosts.successions, 0.1, "tmp"),
    "swaps": (strangers.swaps, 2, "root"),
    "thefts": (strangers.thefts, 0.5, "root"),
    "locks": (strangers.locks, 0.1, "root"),
}


def missing(need, attack):
    """Why a round can't run here; empty if it can."""
    if need in ("tmp", "root") and not attack.private_tmp:
        return "needs a private /tmp: as root, or with user namespaces, and programs that are not in /tmp"
    if need == "root" and not (attack.private_tmp == "root" and parts.can_be_stranger()):
        return "only root can become another user"
    strace = ("strace", "-o", "/dev/null")
    if need == "strace" and (not shutil.which(need) or attack.call("--help", before=strace).returncode):
        return "needs a strace that works"
    return ""


def run(attack, words):
    names = words.only or list(ROUNDS)
    for name in list(names):
        if why := missing(ROUNDS[name][2], attack):
            attack.left_out[name] = why
            names.remove(name)
    end = time.monotonic() + words.seconds
    for turn in range(1 << 30):
        for name in names:
            if turn and time.monotonic() >= end:
                return
            work, seconds, _ = ROUNDS[name]
            attack.chance = random.Random(f"{words.seed} {name} {turn}")
            try:
                work(attack, time.monotonic() + seconds)
            except parts.Lost as loss:
                attack.lost[name].append(str(loss))
                if len(attack.lost[name]) == 1:
                    print(f"attack: {name}, turn {turn}: {loss}", file=sys.stderr, flush=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("boardctl", type=os.path.abspath)
    parser.add_argument("seconds", type=float)
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 32))
    parser.add_argument("--only", action="append", choices=ROUNDS)
    parser.add_argument("--settings", action="store_true")
    words = parser.parse_args()
    if not os.access(words.boardctl, os.X_OK):
        parser.error(f"{words.boardctl} can't be run")
    private_tmp = take_tmp(words.boardctl)
    signal.signal(signal.SIGTERM, lambda number, _: sys.exit(128 + number))  # so that everything is undone
    begin = time.monotonic()
    with tempfile.TemporaryDirectory(prefix="attack-") as name:
        os.chmod(name, 0o755)  # others may enter; each file's own mode decides whether they may read it
        may_set = words.settings and os.access(strangers.SYMLINKS, os.W_OK)
        attack = parts.Attack(words.boardctl, pathlib.Path(name), private_tmp, may_set)
        run(attack, words)
    setting = "also off" if may_set else "as it is"
    print(f"seed {words.seed}, {time.monotonic() - begin:.0f} s, fs.protected_symlinks {setting}")
    for what, count in attack.counts.items():
        print(f"{what:40}{count:9}")
    for what, why in attack.left_out.items():
        print(f"left out: {what}: {why}")
    for name, losses in attack.lost.items():
        print(f"LOST in {name}, {len(losses)} times, first: {losses[0]}")
    print(f"{'lost':40}{sum(map(len, attack.lost.values())):9}")
    if attack.lost:
        sys.exit(f"attack: something was lost; to try again: --seed {words.seed} --only {next(iter(attack.lost))}")


if __name__ == "__main__":
    main()
