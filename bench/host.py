"""Measures an idle host: memory, wakeups, processor time."""

import contextlib
import glob
import os
import stat
import subprocess
import tempfile
import time

SECONDS = 5


def field(path, name):
    with open(path, encoding="utf-8") as file:
        return next(line.split(":")[1].split()[0] for line in file if line.startswith(name + ":"))


def processor():
    return subprocess.run(["sed", "-n", "s/^model name.*: //p;T;q", "/proc/cpuinfo"], stdout=subprocess.PIPE, text=True,
                          check=True).stdout.strip() or "unknown processor"


class Measured:
    """A program that runs until the end of the `with` block. `start` starts it as `self.process`."""

    def __enter__(self):
        with contextlib.ExitStack() as held:
            self.start(held)
            self.held = held.pop_all()
        return self

    def __exit__(self, *_):
        self.held.close()

    def peak(self):
        """Returns the peak of the program's memory in kB."""
        return int(field(f"/proc/{self.process.pid}/status", "VmHWM"))

    def dirty(self):
        """Returns the memory in kB that only this program has written. Pages of files do not count: the system can
        drop them, and shares them with other programs."""
        return int(field(f"/proc/{self.process.pid}/smaps_rollup", "Private_Dirty"))

    def wakes(self):
        return sum(int(field(path, "voluntary_ctxt_switches"))
                   for path in glob.glob(f"/proc/{self.process.pid}/task/*/status"))

    def nanoseconds(self):
        total = 0
        for path in glob.glob(f"/proc/{self.process.pid}/task/*/schedstat"):
            with open(path, encoding="utf-8") as file:
                total += int(file.read().split()[0])
        return total


class Hosted(Measured):
    """Hosts a board until the end of the `with` block. The LEDs of this board are ordinary files.
    Other simulated boards have pipes instead, and reading these would cost the host time."""

    def __init__(self, tree, profile=""):
        """`profile` is added to the profile of a simulated board."""
        self.boardctl = tree + "/bin/boardctl"
        self.profile = profile

    def start(self, held):
        board = held.enter_context(tempfile.TemporaryDirectory()) + "/board"
        subprocess.run([self.boardctl, "sim", "create", board], stdout=subprocess.DEVNULL, check=True)
        with open(board + "/board.toml", "a", encoding="utf-8") as file:
            file.write(self.profile)
        for led in glob.glob(board + "/leds/*"):
            if stat.S_ISFIFO(os.stat(led).st_mode):
                os.unlink(led)
                with open(led, "w", encoding="utf-8") as file:
                    file.write("0")
        self.board = board + "/board.toml"
        self.process = subprocess.Popen([self.boardctl, "--board", self.board, "run"],
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        held.callback(self.process.communicate)
        held.callback(self.process.terminate)
        if not any(line == "ready\n" for line in self.process.stdout):
            raise RuntimeError("boardctl run ended before it was ready")


def shares(*programs):
    """Returns the share of a core, in percent, that each program uses in the next SECONDS."""
    busy, start = [each.nanoseconds() for each in programs], time.monotonic()
    time.sleep(SECONDS)
    took = time.monotonic() - start
    return [(each.nanoseconds() - before) / took / 1e7 for each, before in zip(programs, busy)]


def peak_memory(tree):
    """Returns the peak memory, in kB, of an idle host and of a program with two idle threads."""
    with Hosted(tree) as hosted:
        time.sleep(1)
        memory = hosted.peak()
    with subprocess.Popen([tree + "/bin/threads"], stdin=subprocess.PIPE) as floor:
        while floor.poll() is None and len(glob.glob(f"/proc/{floor.pid}/task/*")) < 3:
            time.sleep(0.01)
        return memory, int(field(f"/proc/{floor.pid}/status", "VmHWM"))


def at_rest(tree, profile=""):
    """Returns the wakeups of an idle host per second, and its share of a core in percent."""
    with Hosted(tree, profile) as hosted:
        time.sleep(1)
        wakes, start = hosted.wakes(), time.monotonic()
        (share,) = shares(hosted)
        return (hosted.wakes() - wakes) / (time.monotonic() - start), share


def wakes_of_watch(tree):
    """Returns the wakeups that one look at all devices costs. A host that looks ten times a second is compared with
    one that looks every five seconds."""
    often, seldom = at_rest(tree, "[watch]\nperiod_s = 0.1\n"), at_rest(tree, "[watch]\nperiod_s = 5\n")
    return max(often[0] - seldom[0], 0) / (1 / 0.1 - 1 / 5)
