#!/usr/bin/env python3
"""Boots the emulated board from a folder that pack.sh filled and reports the results of its tests.

usage: run.py FOLDER [--without DEVICE]... [--devices-only]

Three boots share one EEPROM, a file on this machine, so a boot can read what the previous one
wrote. A test that needs something outside the board prints a request on the console. This program
sends the answer back over the console:

    @SET OBJECT PROPERTY VALUE    sets a property of the emulated machine, VALUE as JSON
    @GET OBJECT PROPERTY          answers with its value as JSON
    @EEPROM                       answers with the bytes of the EEPROM's file, in hexadecimal
"""

import argparse
import json
import pathlib
import re
import selectors
import signal
import socket
import subprocess
import sys
import time

BOOTS = 3
LIMIT = 900  # seconds for one boot; the first one takes 200 on an idle machine
EEPROM_SIZE = 512
BUS = "bus=aspeed.i2c.bus.1"
CHIPS = {
    "eeprom": f"at24c-eeprom,{BUS},address=0x50,rom-size={EEPROM_SIZE},drive=eeprom",
    "tmp105": f"tmp105,id=sensor,{BUS},address=0x48",
    "pca9552": f"pca9552,id=leds,{BUS},address=0x60",
}
NODES = ["leds", "button", "fan"]  # in the device tree; their lines belong to the processor


class Failure(Exception):
    pass


class Machine:
    """One boot, from power on to power off."""

    def __init__(self, folder, boot, without, words_for_init):
        self._eeprom = folder / "eeprom.bin"
        self._log = open(folder / f"console-{boot}.log", "wb")
        self._errors = folder / f"machine-{boot}.log"
        monitor, its_end = socket.socketpair()
        monitor.settimeout(30)
        self._monitor = monitor.makefile("rw")
        kernel = next((folder / "system/boot").glob("vmlinuz-*"))
        words = ["qemu-system-arm", "-M", "ast2600-evb", "-display", "none", "-monitor", "none", "-nic", "none",
                 "-no-reboot", "-serial", "stdio", "-chardev", f"socket,id=monitor,fd={its_end.fileno()}",
                 "-mon", "chardev=monitor,mode=control", "-kernel", kernel, "-dtb", folder / "machine.dtb",
                 "-initrd", folder / "initrd.gz",
                 "-append", f"console=ttyS4,115200n8 quiet panic=-1 boot={boot} {words_for_init}"]
        if "eeprom" not in without:
            words += ["-drive", f"if=none,id=eeprom,format=raw,file={self._eeprom}"]
        for name, chip in CHIPS.items():
            if name not in without:
                words += ["-device", chip]
        with its_end, open(self._errors, "wb") as errors:
            self._process = subprocess.Popen(words, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=errors,
                                             pass_fds=[its_end.fileno()])

    def close(self):
        self._process.kill()
        self._process.wait()
        self._log.close()

    def lines(self):
        """Yields the console's lines until the machine is off, and answers the requests in them.
        Throws Failure if that takes more than LIMIT seconds."""
        end = time.monotonic() + LIMIT
        rest = b""
        self._command("qmp_capabilities")
        with selectors.DefaultSelector() as ready:
            ready.register(self._process.stdout, selectors.EVENT_READ)
            while True:
                left = end - time.monotonic()
                if left <= 0 or not ready.select(left):
                    raise Failure(f"no end within {LIMIT} s")
                got = self._process.stdout.read1(65536)
                if not got:
                    return
                self._log.write(got)
                self._log.flush()
                *whole, rest = (rest + got).split(b"\n")
                for line in whole:
                    line = line.decode(errors="replace").rstrip("\r")
                    self._serve(line)
                    yield line

    def _serve(self, line):
        request = re.search(r"@(SET|GET|EEPROM)\b *(.*)", line)
        if not request:
            return
        words = request[2].split(" ", 2)
        try:
            if request[1] == "EEPROM":
                answer = self._eeprom.read_bytes().hex(" ").upper()
            elif request[1] == "GET":
                answer = json.dumps(self._command("qom-get", path=words[0], property=words[1]))
            else:
                self._command("qom-set", path=words[0], property=words[1], value=json.loads(words[2]))
                answer = "done"
        except Failure as failure:
            answer = f"FAILED: {failure}"
        self._process.stdin.write(answer.encode() + b"\n")
        self._process.stdin.flush()

    def _command(self, name, **arguments):
        try:
            self._monitor.write(json.dumps({"execute": name, "arguments": arguments}) + "\n")
            self._monitor.flush()
            while True:  # skips greeting and events
                answer = json.loads(self._monitor.readline())
                if "return" in answer:
                    return answer["return"]
                if "error" in answer:
                    raise Failure(answer["error"]["desc"])
        except (OSError, ValueError):  # ValueError: an empty answer
            raise Failure(f"the machine does not answer; see {self._errors}") from None


class Results:
    """Reads the results of the tests from the console's lines."""

    def __init__(self):
        self.passed = 0
        self.skipped = 0
        self.failed = []
        self.has_ended = False  # this boot
        self.output = []  # of the program that runs

    def take(self, line):
        word, _, rest = line.partition(" ")
        if word == "@RUN":
            self.output, self.has_ended = [], False
        elif word == "@RAN":
            self._judge(*rest.split())
        elif word == "@END":
            self.has_ended = True
        self.output.append(line)

    def _judge(self, program, status):
        """Counts the tests of a program that has ended; prints the output of those that failed."""
        passed, failed = 0, []
        for test in re.split(r"^\[ RUN +\] ", "\n".join(self.output), flags=re.M)[1:]:
            result = re.search(r"^\[ +(OK|FAILED|SKIPPED) +\] .* \(\d+ ms\)$", test, re.M)
            if result and result[1] == "FAILED":
                failed.append(test.split("\n")[0])
                print(test[:result.end()], file=sys.stderr)
            elif result:
                passed += result[1] == "OK"
                self.skipped += result[1] == "SKIPPED"
        if not failed and (status != "0" or not passed):
            failed = [f"{program} (status {status}, {passed} tests passed)"]
            print(*self.output[-40:], file=sys.stderr, sep="\n")
        self.passed += passed
        self.failed += failed


def make_machine(folder, without):
    """Creates the device tree of this run and an erased EEPROM."""
    (folder / "machine.dtb").write_bytes((folder / "board.dtb").read_bytes())
    for node in NODES:
        if node in without:
            subprocess.run(["fdtput", "-r", folder / "machine.dtb", "/" + node], check=True)
    (folder / "eeprom.bin").write_bytes(b"\xff" * EEPROM_SIZE)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--without", action="append", default=[], choices=[*CHIPS, *NODES])
    parser.add_argument("--devices-only", action="store_true", help="leave out the tests that need no device")
    options = parser.parse_args()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # so that the machine is stopped too
    make_machine(options.folder, options.without)
    results = Results()
    start = time.monotonic()
    for boot in range(1, BOOTS + 1):
        machine = Machine(options.folder, boot, options.without, "devices-only" if options.devices_only else "")
        try:
            for line in machine.lines():
                results.take(line)
            if not results.has_ended:
                raise Failure("the board went off before its tests had ended")
        except Failure as failure:
            print(*results.output[-40:], f"board: boot {boot}: {failure}; console: {options.folder}/console-{boot}.log",
                  file=sys.stderr, sep="\n")
            return 1
        finally:
            machine.close()
    without = f" without {', '.join(options.without)}" if options.without else ""
    print(f"board: {results.passed} tests passed, {len(results.failed)} failed, {results.skipped} skipped{without}; "
          f"{BOOTS} boots in {time.monotonic() - start:.0f} s")
    if results.failed:
        print("failed:", *results.failed, file=sys.stderr, sep="\n  ")
    return 1 if results.failed else 0


if __name__ == "__main__":
    sys.exit(main())
