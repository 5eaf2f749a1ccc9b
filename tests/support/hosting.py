"""What tests in Python need to host a board and to ask its host."""
import json
import os
import re
import socket
import subprocess
import sys

BOUND = 120  # seconds; no reply takes that long


def take_tmp(*paths):
    """Restarts this program with a private /tmp, because the LED pipe has a fixed path there. In the restarted program,
    returns who made that /tmp: "root" or "user". Returns "" without a restart if the machine forbids a private /tmp, or
    if this program or one of the paths is in the machine's own /tmp."""
    if user := os.environ.pop("PRIVATE_TMP", ""):
        return user
    user = "user" if os.geteuid() else "root"
    apart = ["unshare", "--mount", *(["--map-root-user"] if user == "user" else []),
             "sh", "-c", 'mount -t tmpfs -o mode=1777 tmp /tmp && exec "$@"', "sh"]
    if subprocess.run([*apart, "ls", sys.argv[0], *paths], capture_output=True, check=False).returncode == 0:
        os.environ["PRIVATE_TMP"] = user
        os.execvp(apart[0], [*apart, sys.executable, *sys.argv])
    return ""


def ask(path, method):
    """The host's reply to a call of a method. Raises OSError or ValueError if there is none."""
    with socket.socket(socket.AF_UNIX) as host:
        host.settimeout(BOUND)
        host.connect(str(path))
        host.sendall(json.dumps({"method": f"org.boarddrivers.Host.{method}"}).encode() + b"\0")
        reply = b""
        while not reply.endswith(b"\0"):
            reply += host.recv(65536) or b"\0"
        return json.loads(reply[:-1])


def memory_kb(process):
    with open(f"/proc/{process.pid}/status", encoding="ascii") as file:
        return int(re.search(r"VmRSS:\s*(\d+)", file.read())[1])
