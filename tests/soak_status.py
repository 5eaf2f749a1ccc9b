#!/usr/bin/env python3
"""Hosts a simulated board while 64 clients ask, watch, stall, are silent, send garbage and vanish.

usage: tests/soak_status.py BOARDCTL SECONDS [SLACK_KB]
Meanwhile, the host must feed the watchdog in time, and no LED may change more than a tick late. Afterwards,
memory and descriptors must be as before. Without SLACK_KB, memory is not checked.

For the watchdog, the time at which the system receives the host's message counts; for LEDs, the time in the host's
event. On a busy machine, every program waits for processors. A second process, which only ticks, measures its own
delay, and LEDs may change that much later. This process and the host have sessions of their own: the system divides
processor time by session, so the clients take no time from them.
"""
import collections
import json
import multiprocessing
import os
import random
import selectors
import socket
import struct
import subprocess
import sys
import tempfile
import time

TICK = 0.1
# The simulated board's first LED blinks at the start: four ticks on, four off, and one tick in 33 is shown twice.
TICKS_IN_PHASE = 5
MOST_LATE = TICK
WATCHDOG = 2.0
MOST_CALLS = 1000  # at most, until the host has closed earlier connections
SO_TIMESTAMPNS = 35  # Python has no name for it: the system notes when a datagram was sent
CALLS = [b'{"method":"org.boarddrivers.Host.%s"}\0' % name for name in (b"Status", b"Leds", b"Metrics", b"Descriptor")]
MONITOR = b'{"method":"org.boarddrivers.Host.Monitor","more":true}\0'
with open("/proc/sys/net/core/wmem_default", encoding="ascii") as limit:
    MOST_WAITING = int(limit.read()) + 65536  # bytes that the system and the host keep for a client that stalls
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


def phase_lateness(moments):
    """How much later the last moment is than TICKS_IN_PHASE ticks after the first one."""
    return moments[-1] - moments[0] - TICKS_IN_PHASE * TICK


def tick_until_told(pipe):
    """Only ticks, as the LEDs do, until told to stop. Then sends the greatest lateness of any phase."""
    os.setsid()
    moments, late = collections.deque(maxlen=TICKS_IN_PHASE + 1), 0.0
    while not pipe.poll(TICK):
        moments.append(time.monotonic())
        if len(moments) > TICKS_IN_PHASE:
            late = max(late, phase_lateness(moments))
    pipe.send(late)


class Host:
    def __init__(self, boardctl, folder):
        notify = folder + "/notify"
        self.notify = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.notify.bind(notify)
        self.notify.setsockopt(socket.SOL_SOCKET, SO_TIMESTAMPNS, 1)
        board = folder + "/board"
        subprocess.run([boardctl, "sim", "create", board], stdout=subprocess.DEVNULL, check=True)
        environment = os.environ | {"NOTIFY_SOCKET": notify, "WATCHDOG_USEC": str(int(WATCHDOG * 1e6))}
        # pylint: disable-next=consider-using-with # ended by `end`
        self.process = subprocess.Popen([boardctl, "--board", board + "/board.toml", "--format", "json", "run", "--panel"],
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=environment,
                                        start_new_session=True)
        self.path, self.button = board + "/host.socket", os.open(board + "/dev/button", os.O_RDWR)
        self.events, self.changed, self.fed, self.late, self.changes, self.awaited = b"", None, None, 0.0, 0, 0
        while b'"ready"' not in self.process.stdout.readline():
            if self.process.poll() is not None:
                raise SystemExit("soak: the host ended before it was ready")
        os.set_blocking(self.process.stdout.fileno(), False)

    def move_button(self, event):
        os.write(self.button, b"released" if event == "button-pressed" else b"pressed")

    def read_events(self):
        data = self.process.stdout.read() or b""
        self.awaited -= len(data)
        *lines, self.events = (self.events + data).split(b"\n")
        for line in map(json.loads, lines):
            if line["event"].startswith("button-") and self.awaited > 0:
                self.move_button(line["event"])
            if line["event"] == "led" and line["name"] == "power":
                moment = time.strptime(line["time"][:19], "%Y-%m-%dT%H:%M:%S")
                seconds = time.mktime(moment) + int(line["time"][20:23]) / 1000
                if self.changes > 1:  # nothing blinks in the first seconds
                    self.late = max(self.late, phase_lateness([self.changed, seconds]))
                self.changed = seconds
                self.changes += 1

    def read_notify(self):
        message, (note,), _, _ = self.notify.recvmsg(256, 64)
        if message == b"WATCHDOG=1":
            seconds, nanoseconds = struct.unpack("@ll", note[2])
            sent = seconds + nanoseconds / 1e9
            if self.fed and sent - self.fed > WATCHDOG:
                raise SystemExit(f"soak: the watchdog was fed after {sent - self.fed:.1f} s")
            self.fed = sent

    def memory(self):
        with open(f"/proc/{self.process.pid}/status", encoding="utf-8") as file:
            return next(int(line.split()[1]) for line in file if line.startswith("VmRSS"))

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.process.pid}/fd"))

    def end(self):
        self.process.terminate()
        self.process.stdout.close()
        os.close(self.button)
        if self.process.wait(30) != 0:
            raise SystemExit(f"soak: the host ended with status {self.process.returncode}")


def load(host, seconds, kinds, told=0):
    """Runs the clients for `seconds`, and presses the button until the host has reported `told` bytes of events.
    Returns how many calls were answered."""
    clients = [Client(host.path, kind) for kind in kinds]
    chooser = selectors.DefaultSelector()
    chooser.register(host.process.stdout, selectors.EVENT_READ, host.read_events)
    chooser.register(host.notify, selectors.EVENT_READ, host.read_notify)

    def start(client):
        client.connect()
        if client.kind not in ("stall", "silent"):
            chooser.register(client.socket, selectors.EVENT_READ, client)

    for client in clients:
        start(client)
    host.awaited = told
    if told:
        host.move_button("button-released")
    end = time.monotonic() + seconds
    while time.monotonic() < end or host.awaited > 0:
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


def settle(host, descriptors=None):
    """Makes calls until the host has closed the connections of `load`: until it has `descriptors` open or, if that is
    None, until their number stays the same. Returns the host's memory and that number."""
    now, same = None, 0
    for _ in range(MOST_CALLS):
        with socket.socket(socket.AF_UNIX) as call:
            call.settimeout(30)
            call.connect(host.path)
            try:
                call.send(CALLS[0])
                answer = call.recv(65536)
                while answer and not answer.endswith(b"\0"):
                    answer = call.recv(65536)
            except ConnectionError:
                continue  # refused: the host still holds too many connections of `load`
            before, now = now, host.descriptors() - 1  # without this connection
        same = same + 1 if now == before else 0
        if now == descriptors if descriptors else same == 20:
            host.read_events()
            return host.memory(), now
    raise SystemExit(f"soak: the host has {now} descriptors (expected {descriptors})")


def main():
    boardctl, seconds, slack = sys.argv[1], float(sys.argv[2]), int(sys.argv[3]) if len(sys.argv) > 3 else None
    mine, its = multiprocessing.Pipe()
    ticker = multiprocessing.Process(target=tick_until_told, args=(its,), daemon=True)
    ticker.start()
    with tempfile.TemporaryDirectory() as folder:
        host = Host(boardctl, folder)
        try:
            # Makes the host allocate what it allocates only once, at the first use.
            load(host, 0, ["stall"] * KINDS.count("stall"), MOST_WAITING)
            load(host, 2, KINDS)
            before, descriptors = settle(host)
            answered = load(host, seconds, KINDS)
            grown = settle(host, descriptors)[0] - before
            host.end()
        except BaseException:
            host.process.kill()
            raise
    mine.send(None)
    floor = mine.recv()
    if slack is not None and grown > slack:
        raise SystemExit(f"soak: memory grew by {grown} kB (expected at most {slack})")
    if host.late > floor + MOST_LATE:
        raise SystemExit(f"soak: an LED changed {host.late:.3f} s late, a process that only ticks {floor:.3f} s")
    print(f"64 clients, {answered} calls answered, {host.changes} LED changes, the latest {max(host.late, 0):.3f} s late "
          f"(a process that only ticks: {floor:.3f} s): memory grew by {grown} kB, descriptors are {descriptors} as before")


main()
