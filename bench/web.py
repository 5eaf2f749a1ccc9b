"""Measures boardweb and the host that it shows: memory, and the time that pages in browsers cost.

A page is a client that follows the events, as the page's script does, on a board whose LEDs blink and roll.
"""

import contextlib
import os
import re
import selectors
import socket
import subprocess
import threading
import time

import host

PAGES = 10
MOST_CLIENTS = 100  # boardweb turns away the next one
# A light rolls over four LEDs, so that every tick causes a message to each client.
ROLLING = """
[[leds.command]]
word1 = "bench"
word2 = "roll"
mask = 0xF0
action = "roll-up"
group = 3
default = true
"""


class Server(host.Measured):
    """Serves a hosted board until the end of the `with` block."""

    def __init__(self, tree, hosted):
        self.command = [tree + "/bin/boardweb", "--board", hosted.board, "--listen", "127.0.0.1:0"]

    def start(self, held):
        # pylint: disable-next=consider-using-with # ended at the end of the `with` block
        self.process = subprocess.Popen(self.command, stderr=subprocess.PIPE, text=True)
        held.callback(self.process.communicate)
        held.callback(self.process.terminate)
        found = re.search(r"http://127\.0\.0\.1:(\d+)/", self.process.stderr.readline())
        if not found:
            raise RuntimeError("boardweb does not listen")
        self.port = int(found[1])


class Clients:
    """Follows the events with many connections until the end of the `with` block."""

    def __init__(self, server, count):
        self.server, self.count, self.ended, self.failed = server, count, threading.Event(), None
        self.thread = threading.Thread(target=self.read)
        self.chooser = selectors.DefaultSelector()

    def __enter__(self):
        with contextlib.ExitStack() as held:
            held.callback(self.chooser.close)
            for _ in range(self.count):
                client = held.enter_context(socket.create_connection(("127.0.0.1", self.server.port)))
                client.sendall(b"GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n")
                # A new client gets several messages at once; the last one is about the LEDs.
                got = b""
                while b"event: leds\n" not in got:
                    got += (new := client.recv(65536))
                    if not new:
                        raise RuntimeError("boardweb has turned an event client away")
                self.chooser.register(client, selectors.EVENT_READ)
            self.thread.start()
            held.callback(self.thread.join)
            held.callback(self.ended.set)
            self.held = held.pop_all()
        return self

    def __exit__(self, *_):
        self.held.close()
        if self.failed:
            raise RuntimeError(self.failed)

    def read(self):
        while not self.ended.is_set():
            for key, _ in self.chooser.select(0.1):
                if not key.fileobj.recv(65536):
                    self.failed = "boardweb has ended an event client"
                    return


def figures(tree):
    """Returns the memory of boardweb in kB, at rest and with as many clients as it accepts; the memory that it adds to
    the host; and the shares of a core, in percent, that boardweb and the host use with some pages."""
    os.sync()  # until a newly linked program is on the disk, its pages count as changed by the process
    with host.Hosted(tree, ROLLING) as hosted:
        time.sleep(1)
        before = hosted.dirty()
        with Server(tree, hosted) as server:
            time.sleep(6)  # boardweb asks for the status every five seconds
            at_rest = server.dirty()
            with Clients(server, PAGES):
                time.sleep(1)
                shares = host.shares(server, hosted)
                with Clients(server, MOST_CLIENTS - PAGES):
                    time.sleep(1)
                    return at_rest, server.dirty(), hosted.dirty() - before, *shares
