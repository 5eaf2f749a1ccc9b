#!/usr/bin/env python3
"""Tests boardweb over plain sockets, as friends and attackers would use it.

usage: http_test.py BOARDCTL BOARDWEB CANNED_HOST [--connections N] [--memory]
N is the number of connections made one after another, 20000 by default. With --memory, the memory of server and
host must not have grown at the end.
"""
import argparse
import contextlib
import itertools
import json
import os
import pathlib
import re
import resource
import signal
import socket
import socketserver
import subprocess
import sys
import tempfile
import threading

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "support"))
from hosting import ask, memory_kb, take_tmp

LIMIT = 120  # seconds; a test fails if it waits that long
SLACK_KB = 512
PAGE = pathlib.Path(__file__).resolve().parents[2] / "tools" / "boardweb" / "page"
TYPES = {".html": "text/html", ".css": "text/css", ".js": "text/javascript", ".svg": "image/svg+xml"}
HEADERS = {
    "content-security-policy": "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
                               "img-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'",
    "x-content-type-options": "nosniff",
    "referrer-policy": "no-referrer",
    "cross-origin-resource-policy": "same-origin",
}


class Client:
    """A connection to the server."""

    def __init__(self, address, receive_buffer=None):
        self.socket = socket.socket(socket.AF_UNIX if isinstance(address, str) else socket.AF_INET)
        self.socket.settimeout(LIMIT)
        if receive_buffer:
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
        self.socket.connect(address)
        self.stream = self.socket.makefile("rb")

    def send(self, path="/", method="GET", headers=("Host: localhost",)):
        head = "".join(f"{line}\r\n" for line in (f"{method} {path} HTTP/1.1", *headers))
        self.socket.sendall(head.encode("latin-1") + b"\r\n")

    def head(self):
        """Status and headers of the next response; None if the server has closed the connection."""
        line = self.stream.readline()
        if not line:
            return None, {}
        fields = [field.decode().rstrip("\r\n").split(": ", 1) for field in iter(self.stream.readline, b"\r\n")]
        return int(line.split()[1]), {name.lower(): value for name, value in fields}

    def ask(self, *request, method="GET", **others):
        """Status, headers and body of the response to a request."""
        self.send(*request, method=method, **others)
        status, headers = self.head()
        return status, headers, b"" if method == "HEAD" else self.stream.read(int(headers.get("content-length", 0)))

    def events(self, last_id=None):
        """Follows the events; yields (name, data, id) of each message. Fails if the server refuses."""
        self.send("/events", headers=("Host: localhost", *([f"Last-Event-ID: {last_id}"] if last_id else [])))
        status, headers = self.head()
        assert status == 200 and headers["content-type"] == "text/event-stream", (status, headers)
        text = ""
        while size := int(self.stream.readline() or b"0", 16):
            text += self.stream.read(size).decode()
            self.stream.readline()
            while "\n\n" in text:
                message, text = text.split("\n\n", 1)
                fields = dict(line.split(": ", 1) for line in message.splitlines() if not line.startswith(":"))
                if "data" in fields:
                    yield fields["event"], json.loads(fields["data"]), fields["id"]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stream.close()
        self.socket.close()


def until(events, name, check=lambda data: True):
    """The data and the identifier of the next event of that name that passes the check."""
    return next((data, number) for event, data, number in events if event == name and check(data))


class Server:
    def __init__(self, program, *options, listen="127.0.0.1:0"):
        self.process = subprocess.Popen([*program, "--listen", listen, *options], stderr=subprocess.PIPE, text=True)
        line = self.process.stderr.readline()
        at = re.fullmatch(r"boardweb: listening on (?:http://127\.0\.0\.1:(\d+)/|(/.*))\n", line)
        assert at, line
        self.address = ("127.0.0.1", int(at[1])) if at[1] else at[2]

    def ask(self, *request, **others):
        with Client(self.address) as client:
            return client.ask(*request, **others)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.send_signal(signal.SIGTERM)
        assert self.process.wait(LIMIT) == 0
        self.process.stderr.close()


class Host:
    def __init__(self, program, folder):
        self.program, self.folder, self.process = program, folder, None
        subprocess.run([*program, "sim", "create", str(folder)], check=True, stdout=subprocess.DEVNULL)
        with open(folder / "board.toml", "a", encoding="ascii") as profile:
            profile.write("[watch]\nperiod_s = 1\n")
        self.profile, self.socket = str(folder / "board.toml"), folder / "host.socket"

    def start(self):
        self.process = subprocess.Popen([*self.program, "--board", self.profile, "run"], stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)

    def kill(self):
        self.process.kill()
        self.process.wait()


def check_routes(server, host):
    for path, method in (("/status", "Status"), ("/leds", "Leds"), ("/descriptor", "Descriptor")):
        status, headers, body = server.ask(path)
        shape = ask(host.socket, method)["parameters"]
        assert (status, headers["content-type"]) == (200, "application/json"), (path, status)
        assert list(json.loads(body)) == list(shape) and ("profile" not in shape or host.profile in body.decode())
    status, headers, body = server.ask("/metrics")
    assert (status, headers["content-type"]) == (200, "text/plain; version=0.0.4; charset=utf-8")
    assert body.startswith(b"# HELP board_info")
    history = json.loads(server.ask("/history")[2])
    assert [(each["device"], each["unit"]) for each in history["series"]] == [("fan", "level"), ("thermal", "celsius")]
    assert len({len(each["values"]) for each in history["series"]}) == 1 and history["end"].endswith("Z")
    for file in PAGE.iterdir():
        path = "/" if file.name == "index.html" else f"/{file.name}"
        status, headers, body = server.ask(path)
        assert (status, headers["content-type"]) == (200, f"{TYPES[file.suffix]}; charset=utf-8"), path
        assert body == file.read_bytes(), path
        unchanged = server.ask(path, headers=("Host: localhost", f"If-None-Match: {headers['etag']}"))
        assert (unchanged[0], unchanged[2]) == (304, b"")
        assert server.ask(path, headers=("Host: localhost", 'If-None-Match: "x"'))[0] == 200


def check_refusals(server):
    local = ("Host: localhost",)
    for path, method, headers, expected in (
            ("/", "HEAD", local, 200), ("/status", "HEAD", local, 200), ("/events", "HEAD", local, 200),
            ("/index.html", "GET", local, 404), ("/%73tatus", "GET", local, 404), ("/status%00", "GET", local, 404),
            ("/../status", "GET", local, 404), ("/\xff\xc0\xaf", "GET", local, 404),
            ("/status?x=\xff", "GET", local, 200), ("/status", "GET", ("Host: \xff",), 421),
            ("/status", "PUT", local, 405), ("/", "OPTIONS", local, 405), ("/", "TRACE", local, 405),
            ("/", "POST", (*local, "Content-Length: 1"), 405), ("/", "GET", (*local, "Content-Length: 1"), 413),
            ("/", "GET", (*local, "Transfer-Encoding: chunked"), 413), ("/", "GET", (), 400),
            ("/", "GET", (*local, *local), 400), ("/", "GET", (*local, "Content-Length: 0", "Content-Length: 9"), 400),
            ("http://localhost/history", "GET", ("Host: evil.example",), 200),
            ("http://evil.example/history", "GET", local, 421), ("/history", "GET", ("Host: localhost \t",), 200),
            ("/status", "GET", ("Host: evil.example",), 421),
            ("/events", "GET", (*local, "Sec-Fetch-Site: cross-site", "Sec-Fetch-Mode: cors"), 403),
            ("/", "GET", (*local, "Sec-Fetch-Site: cross-site", "Sec-Fetch-Mode: navigate"), 200)):
        status, got, body = server.ask(path, method=method, headers=headers)
        assert status == expected, (path, method, headers, status)
        assert (status == 405) == (got.get("allow") == "GET, HEAD") and b"evil" not in body
        if status == 400 and "x-content-type-options" not in got:
            continue  # the HTTP library itself has answered
        assert HEADERS.items() <= got.items() and "set-cookie" not in got, (path, method, headers, got)
        assert got["cache-control"] == ("no-cache" if path == "/" and status == 200 else "no-store")


def check_attacks(server):
    long = "x" * 18000
    assert server.ask(headers=("Host: localhost", f"X: {long}"))[0] in (431, 413)
    assert server.ask("/" + long)[0] == 414
    assert server.ask(headers=("Host: localhost", f"X: {long[:10000]}"))[0] == 200
    cookies = "; ".join(f"session{number}={long[:30]}" for number in range(100))
    assert server.ask(headers=("Host: localhost", f"Cookie: {cookies}"))[0] == 200
    for garbage in (b"GET", b"\xff\xfe", b"PRI * HTTP/2.0\r\n\r\nSM", b"\x16\x03\x01", b"GET / HTTP/9.9"):
        with Client(server.address) as client:
            client.socket.sendall(garbage + b"\r\n\r\n")
            status = client.head()[0]
            assert status is None or status >= 400, (garbage, status)
    with Client(server.address) as client:
        for path in ("/status", "/nothing", "/", "/status") * 5:
            client.send(path)
        for expected in (200, 404, 200, 200) * 5:
            status, headers = client.head()
            client.stream.read(int(headers["content-length"]))
            assert status == expected


def check_slow_requests(server):
    """The server ends a connection whose request trickles in, but still sends events to others."""
    with Client(server.address) as follower, Client(server.address) as idle, Client(server.address) as slow:
        events = follower.events()
        next(events)
        idle.socket.sendall(bytes(100) + b"\r\n\r\n")
        slow.socket.sendall(b"GET / HTTP/1.1\r\nHost: localhost\r\nX: ")
        slow.socket.settimeout(0.5)
        sent = 0
        while True:
            try:
                assert slow.socket.recv(1) == b""
                break
            except TimeoutError:
                sent += 1
                assert sent < 2 * LIMIT
                with contextlib.suppress(ConnectionError):
                    slow.socket.sendall(b"x")
            except ConnectionError:
                break
        assert sent > 0 and idle.socket.recv(1) == b""
        until(events, "status")
        until(events, "status")
        until(events, "status")


def check_events(server, host):
    with Client(server.address) as client:
        events = client.events()
        first = next(events)
        assert first[0] == "host" and first[1]["connected"] and first[1]["socket"] == str(host.socket), first
        status, last_id = until(events, "status")
        assert "events" not in status and status["profile"] == host.profile
    sensor = host.folder / "dev" / "temperature"
    usual = sensor.read_text(encoding="ascii")
    with Client(server.address) as client:
        events = client.events(last_id)
        sensor.write_text("99000", encoding="ascii")
        board, board_id = until(events, "board")
        assert board["event"]["event"] == "temperature-over" and board["lost"] == 0, board
        assert until(events, "status")[0]["alarms"]
        sensor.write_text(usual, encoding="ascii")
        assert until(events, "status", lambda status: not status["alarms"])
    with Client(server.address) as client:  # gets what it has missed, although the alarm is over
        events = client.events(board_id)
        event, data, number = next(events)
        word, last = board_id.split("-")
        assert number == f"{word}-{int(last) + 1}"
        while event != "status":
            event, data, _ = next(events)
        assert data["alarms"]
    with Client(server.address) as client:
        events = client.events()
        masks = [until(events, "leds")[0]["lit"] for _ in range(3)]
        assert masks[0] != masks[1] != masks[2], masks


def check_most_clients(server):
    def follow():
        """Another client that follows the events. The server may not have noticed yet that earlier ones left."""
        while True:
            client = stack.enter_context(Client(server.address))
            client.send("/events")
            if client.head()[0] == 200:
                return

    with contextlib.ExitStack() as stack:
        for _ in range(100):
            follow()
        assert server.ask("/events")[0] == 503
        assert server.ask("/status")[0] == 200
    with contextlib.ExitStack() as stack:
        follow()


def check_host_gone(server, host):
    with Client(server.address) as client:
        events = client.events()
        until(events, "host", lambda data: data["connected"])
        os.kill(host.process.pid, signal.SIGSTOP)  # a host that hangs
        status, _, body = server.ask("/status")
        assert status == 503 and "error" in json.loads(body) and server.ask("/")[0] == 200
        until(events, "host", lambda data: not data["connected"] and data["fault"])
        os.kill(host.process.pid, signal.SIGCONT)
        until(events, "host", lambda data: data["connected"])
        host.kill()
        until(events, "host", lambda data: not data["connected"])
        assert server.ask("/metrics")[0] == 503
        host.start()
        until(events, "host", lambda data: data["connected"])
        assert server.ask("/status")[0] == 200


def check_slow_reader(boardweb, canned_host, folder):
    """A slow reader is told how much it has missed; a quick one gets everything."""
    (folder / "board.toml").touch()
    at = str(folder / "canned.socket")
    host = subprocess.Popen([*canned_host, str(folder / "board.toml"), at], stdin=subprocess.PIPE,
                            stdout=subprocess.PIPE, text=True)
    assert host.stdout.readline() == "ready\n"
    with host, Server(boardweb, "--host", at, listen=str(folder / "web.socket")) as server:
        with Client(server.address, 4096) as slow, Client(server.address) as quick:
            sluggish, events = slow.events(), quick.events()
            until(sluggish, "status")
            until(events, "status")
            for number in range(300):
                host.stdin.write(json.dumps({"event": "x", "number": number, "text": "x" * 1000}) + "\n")
                host.stdin.flush()
                until(events, "board", lambda data, number=number: data["event"]["number"] == number)
            assert until(sluggish, "lost")[0]["messages"] > 0
            assert [next(sluggish)[0] for _ in range(2)] == ["host", "status"]
        host.stdin.close()
        host.stdout.close()


class ForgetfulHost(socketserver.StreamRequestHandler):
    """Answers calls, but ends each connection for the LEDs after its first reply. Each reply has another mask."""

    masks = itertools.count(5)

    def handle(self):
        request = b""
        while byte := self.rfile.read(1):
            if byte != b"\0":
                request += byte
                continue
            method = json.loads(request)["method"].rpartition(".")[2]
            request = b""
            reply = {"Monitor": {"event": None, "lost": 0}}.get(method, {})
            if method == "MonitorLeds":
                reply = {"lit": next(self.masks)}
            self.wfile.write(json.dumps({"parameters": reply, "continues": method.startswith("Monitor")}).encode() + b"\0")
            if method == "MonitorLeds":
                return


def check_leds_lost(boardweb, folder):
    """If the host stops reporting its LEDs, neither old nor new clients are shown their former state."""
    at = str(folder / "forgetful.socket")
    with socketserver.ThreadingUnixStreamServer(at, ForgetfulHost) as host:
        host.daemon_threads = True
        threading.Thread(target=host.serve_forever, daemon=True).start()
        with Server(boardweb, "--host", at) as server, Client(server.address) as old, Client(server.address) as new:
            events = old.events()
            until(events, "leds", lambda data: data["lit"] == 5)
            until(events, "leds", lambda data: data["lit"] is None)
            statuses = 0
            for name, data, _ in new.events():
                assert name != "leds" or data["lit"] != 5
                statuses += name == "status"
                if statuses == 2:  # some seconds later, after everything that the server knew
                    break
        host.shutdown()


def check_end(boardweb, folder):
    """If asked to end, the server ends, even if clients are waiting."""
    path = folder / "end.socket"
    with socket.socket(socket.AF_UNIX) as host:  # accepts calls, but never answers
        host.bind(str(folder / "mute.socket"))
        host.listen()
        server = Server(boardweb, "--host", str(folder / "mute.socket"), listen=str(path))
        assert path.stat().st_mode & 0o777 == 0o660
        with Client(server.address) as follower, Client(server.address) as waiting:
            events = follower.events()
            assert next(events)[0] == "host"
            waiting.send("/status")
            with server:
                pass
            assert not list(events) and not path.exists()


def check_wrong_calls(boardweb, folder):
    """The program says what is wrong, and ends before it does anything."""
    def call_with(*options, most_files=None):
        """Exit status and messages of a call, with a limit of open files if one is given."""
        limit = most_files and (lambda: resource.setrlimit(resource.RLIMIT_NOFILE, most_files))
        done = subprocess.run([*boardweb, *options], stderr=subprocess.PIPE, text=True, timeout=LIMIT, check=False,
                              preexec_fn=limit)
        return done.returncode, done.stderr

    name = "is not a name (expected NAME or [ADDRESS] in ASCII, without a port)"
    for options, message in (
            (("--host", ""), "--host: is empty (expected a path)"),
            (("--board", ""), "--board: is empty (expected a path)"),
            (("--listen", "[::1]:0", "--listen", "[::1]:0"), "--listen: can be given only once"),
            (("--host=",), "--host: the value is missing"),
            (("--listen", "0.0.0.0:0"), "--listen: other machines can connect to 0.0.0.0:0"),
            *((("--allow-host", given), f"--allow-host: '{shown}' {name}") for given, shown in (
                ("a\x1bb", r"a\x1bb"), ("b\xfcro", "b\xfcro"), ("a:1", "a:1"), ("[::1]:1", "[::1]:1"), ("", "")))):
        status, messages = call_with(*options)
        assert status == 2 and messages.startswith(f"boardweb: {message}"), (options, status, messages)
    missing = folder / "missing" / "socket"
    for most_files, warns in (((100, 100), True), ((100, 200), False)):
        status, messages = call_with("--listen", str(missing), most_files=most_files)
        assert (status, "only 100 files" in messages) == (1, warns), (status, messages)
        assert messages.endswith(f"{missing.parent}/: can't open the folder of the socket: No such file or directory\n")
    assert not missing.parent.exists()


def check_many_connections(server, count):
    for number in range(count):
        with Client(server.address) as client:
            if number % 2:
                assert client.ask("/status" if number % 16 == 1 else "/")[0] == 200


def is_served(server):
    """Whether the server answers. If a hundred others arrive first, it may end the connection instead."""
    with contextlib.suppress(ConnectionError):
        return server.ask("/status")[0] == 200
    return False


def check_held_connections(server):
    """Clients that hold connections do not keep others out."""
    most = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    count = min(2000, most - 100)
    resource.setrlimit(resource.RLIMIT_NOFILE, (most, most))
    with contextlib.ExitStack() as stack:
        for _ in range(count):
            client = stack.enter_context(socket.socket())
            client.setblocking(False)
            client.connect_ex(server.address)
        assert any(is_served(server) for _ in range(100))
    return count


def run(words, folder):
    host = Host(words.boardctl.split(), folder / "sim")
    with Server(words.boardweb.split(), "--board", host.profile) as server:
        with Client(server.address) as early:
            events = early.events()
            assert not next(events)[1]["connected"]
            host.start()
            until(events, "status")
            until(events, "status")  # by now the history has a value
        try:
            check_routes(server, host)
            check_refusals(server)
            check_attacks(server)
            check_events(server, host)
            check_host_gone(server, host)
            check_most_clients(server)
            check_many_connections(server, 200)
            before = memory_kb(server.process), memory_kb(host.process)
            check_many_connections(server, words.connections)
            held = check_held_connections(server)
            check_slow_requests(server)
            assert server.ask("/status")[0] == 200
            after = memory_kb(server.process), memory_kb(host.process)
        finally:
            host.kill()
    print(f"{words.connections} connections in a row, {held} at once; "
          f"server {before[0]} kB before, {after[0]} kB after; host {before[1]} and {after[1]} kB")
    for old, new in zip(before, after):
        assert not words.memory or new - old <= SLACK_KB, "the memory has grown"
    check_wrong_calls(words.boardweb.split(), folder)
    check_end(words.boardweb.split(), folder)
    check_slow_reader(words.boardweb.split(), words.canned_host.split(), folder)
    check_leds_lost(words.boardweb.split(), folder)


def main():
    parser = argparse.ArgumentParser()
    for program in ("boardctl", "boardweb", "canned_host"):
        parser.add_argument(program)
    parser.add_argument("--connections", type=int, default=20000)
    parser.add_argument("--memory", action="store_true")
    words = parser.parse_args()
    take_tmp(*(word for word in " ".join((words.boardctl, words.boardweb, words.canned_host)).split() if "/" in word))
    with tempfile.TemporaryDirectory() as folder:
        run(words, pathlib.Path(folder))


if __name__ == "__main__":
    main()
