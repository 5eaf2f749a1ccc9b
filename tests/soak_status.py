#!/usr/bin/env python3
"""Hosts a simulated board while 64 clients ask, watch, stall, are silent, send garbage and vanish.

usage: tests/soak_status.py BOARDCTL SECONDS [SLACK_KB]
Afterwards, memory and descriptors must be as before. Meanwhile, the init system must be told in time that
the host is alive, and the LEDs must go on. How late an LED changed at most is printed; on an idle machine
that is less than a tick.
"""
import json
import os
import random
import selectors
import socket
import subprocess
import sys
import tempfile
import time

TICK = 0.1
# The simulated board's first LED blinks at the start: four ticks on, four off, and one tick in 33 is shown twice.
LONGEST_PHASE = 5 * TICK
MOST_LATE = 2.0  # on a machine that does much else
WATCHDOG = 10.0
CALLS = [b'{"method":"org.boarddrivers.Host.%s"}\0' % name for name in (b"Status", b"Leds", b"Metrics")]
MONITOR = b'{"method":"org.boarddrivers.Host.Monitor","more":true}\0'
KINDS = ["ask"] * 16 + ["watch"] * 16 + ["stall"] * 8 + ["silent"] * 8 + ["garbage"] * 8 + ["vanish"] * 8


class Client:
    def __init__(self, path, kind):
        self.path, self.kind, self.answered, self.socket = path, kind, 0, None

    def connect(self):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect(self.path)
        self.socket.setblocking(False)
        if self.kind == "ask":
            self.send(random.choice(CALLS))
        elif self.kind in ("watch", "stall"):
            self.send(MONITOR)
        elif self.kind == "garbage":
            self.send(random.choice([b"{]\0", b"[]\0", bytes(random.randrange(256) for _ in range(99)) + b"\0",
                                     b"x" * 70000]))
        elif self.kind == "vanish":
            self.send(random.choice(CALLS)[:random.randrange(1, 20)])

    def send(self, data):
        try:
            self.socket.send(data)
        except (BlockingIOError, ConnectionError):
            pass  # the host reads later, or has closed the connection, which `receive` notices

    def receive(self):
        """False if the host has closed the connection."""
        try:
            data = self.socket.recv(65536)
        except ConnectionError:
            return False
        if self.kind == "ask" and data.endswith(b"\0"):
            self.answered += 1
            self.send(random.choice(CALLS))
        return bool(data)


class Host:
    def __init__(self, boardctl, folder):
        notify = folder + "/notify"
        self.notify = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.notify.bind(notify)
        board = folder + "/board"
        subprocess.run([boardctl, "sim", "create", board], stdout=subprocess.DEVNULL, check=True)
        environment = os.environ | {"NOTIFY_SOCKET": notify, "WATCHDOG_USEC": str(int(WATCHDOG * 1e6))}
        # pylint: disable-next=consider-using-with # ended by `end`
        self.process = subprocess.Popen([boardctl, "--board", board + "/board.toml", "--format", "json", "run", "--panel"],
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=environment)
        self.path = board + "/host.socket"
        self.events, self.changed, self.fed, self.late, self.changes = b"", None, None, 0.0, 0
        while b'"ready"' not in self.process.stdout.readline():
            if self.process.poll() is not None:
                raise SystemExit("soak: the host ended before it was ready")
        os.set_blocking(self.process.stdout.fileno(), False)

    def read_events(self):
        self.events += self.process.stdout.read() or b""
        *lines, self.events = self.events.split(b"\n")
        for line in map(json.loads, lines):
            if line["event"] == "led" and line["name"] == "power":
                moment = time.strptime(line["time"][:19], "%Y-%m-%dT%H:%M:%S")
                seconds = time.mktime(moment) + int(line["time"][20:23]) / 1000
                if self.changes > 1:  # nothing blinks in the first seconds
                    self.late = max(self.late, seconds - self.changed - LONGEST_PHASE)
                self.changed = seconds
                self.changes += 1

    def read_notify(self):
        if self.notify.recv(256) == b"WATCHDOG=1":
            now = time.monotonic()
            if self.fed and now - self.fed > WATCHDOG:
                raise SystemExit(f"soak: the watchdog was fed after {now - self.fed:.1f} s")
            self.fed = now

    def memory(self):
        with open(f"/proc/{self.process.pid}/status", encoding="utf-8") as file:
            return next(int(line.split()[1]) for line in file if line.startswith("VmRSS"))

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.process.pid}/fd"))

    def end(self):
        self.process.terminate()
        self.process.stdout.close()
        if self.process.wait(30) != 0:
            raise SystemExit(f"soak: the host ended with status {self.process.returncode}")


def load(host, seconds):
    """Runs the clients for so long. Returns how many calls were answered."""
    clients = [Client(host.path, kind) for kind in KINDS]
    chooser = selectors.DefaultSelector()
    chooser.register(host.process.stdout, selectors.EVENT_READ, host.read_events)
    chooser.register(host.notify, selectors.EVENT_READ, host.read_notify)

    def start(client):
        client.connect()
        if client.kind not in ("stall", "silent"):
            chooser.register(client.socket, selectors.EVENT_READ, client)

    for client in clients:
        start(client)
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if host.process.poll() is not None:
            raise SystemExit(f"soak: the host ended with status {host.process.returncode}")
        for key, _ in chooser.select(0.05):
            if not isinstance(key.data, Client):
                key.data()
            elif not key.data.receive():
                chooser.unregister(key.data.socket)
                key.data.socket.close()
                start(key.data)
        client = random.choice(clients)  # a client that gives up
        if client.kind in ("vanish", "watch", "ask"):
            chooser.unregister(client.socket)
            client.socket.close()
            start(client)
    for client in clients:
        client.socket.close()
    return sum(client.answered for client in clients)


def main():
    boardctl, seconds, slack = sys.argv[1], float(sys.argv[2]), int(sys.argv[3]) if len(sys.argv) > 3 else 512
    with tempfile.TemporaryDirectory() as folder:
        host = Host(boardctl, folder)
        try:
            load(host, 2)  # allocates what is allocated once, at the first use
            before, descriptors = settle(host)
            answered = load(host, seconds)
            grown = settle(host, descriptors)[0] - before
        except BaseException:
            host.process.kill()
            raise
        host.end()
    if grown > slack:
        raise SystemExit(f"soak: memory grew by {grown} kB (expected at most {slack})")
    if host.late > MOST_LATE:
        raise SystemExit(f"soak: an LED changed {host.late:.3f} s late")
    print(f"64 clients, {answered} calls answered, {host.changes} LED changes, the latest {max(host.late, 0):.3f} s late: "
          f"memory grew by {grown} kB, descriptors are {descriptors} as before")


def settle(host, descriptors=None):
    """Waits until the host has closed all connections: until it has so many descriptors, or until their number
    stays the same. Returns the memory and the number then."""
    end, now, same = time.monotonic() + 30, None, 0
    while now != descriptors if descriptors else same < 20:
        if time.monotonic() > end:
            raise SystemExit(f"soak: the host has {now} descriptors (expected {descriptors})")
        time.sleep(0.05)
        before, now = now, host.descriptors()
        same = same + 1 if now == before else 0
    host.read_events()
    return host.memory(), now


main()
