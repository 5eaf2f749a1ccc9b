"""What the rounds of an attack share: the count of what was tried and lost, descriptor images, and hosts."""
import collections
import contextlib
import ctypes
import os
import random
import select
import signal
import struct
import subprocess
import time

import hosting

BOUND = 30  # seconds; whatever takes longer has hung
PIPE = "/tmp/evt.fifo"
STRANGER = 65534  # the user id of another user, who has no rights at all


class Lost(Exception):
    """Something did not survive the attack."""


class Attack:
    def __init__(self, boardctl, folder, private_tmp, may_set):
        self.boardctl, self.folder, self.private_tmp, self.may_set = boardctl, folder, private_tmp, may_set
        self.backups = folder / "state" / "boardctl"
        self.counts, self.lost = collections.Counter(), collections.defaultdict(list)
        self.left_out = {}  # why, by round
        self.chance = random.Random()  # each round gets a seeded one
        for name in ("XDG_RUNTIME_DIR", "RUNTIME_DIRECTORY", "NOTIFY_SOCKET", "BOARDCTL_BOARD"):
            os.environ.pop(name, None)
        os.environ.update(HOME=str(folder), XDG_STATE_HOME=str(folder / "state"))

    def start(self, *words, **others):
        return subprocess.Popen([self.boardctl, *map(str, words)], **others)

    def call(self, *words, before=(), **others):
        try:
            return subprocess.run([*before, self.boardctl, *map(str, words)], capture_output=True, text=True,
                                  errors="replace", timeout=BOUND, check=False, **others)
        except subprocess.TimeoutExpired as error:
            raise Lost(f"hangs: boardctl {' '.join(map(str, words))}") from error

    def make_board(self, name):
        """A simulated board, whose host reads its pipe often."""
        board = self.folder / name
        if not board.exists():
            self.call("sim", "create", board)
            profile = board / "board.toml"
            text = profile.read_text(encoding="ascii")
            profile.write_text(text.replace("tick_ms = 100", "tick_ms = 1"), encoding="ascii")
        return board


def expect(is_true, message):
    if not is_true:
        raise Lost(message)


def await_true(what, condition):
    """Polls until the condition holds; raises Lost after BOUND seconds."""
    end = time.monotonic() + BOUND
    while not condition():
        expect(time.monotonic() < end, f"not within {BOUND} s: {what}")
        time.sleep(0.01)


def faults_in(events):
    return [line for line in events.splitlines() if line.startswith(b'{"event":"fault"')]


def image_of(tags):
    """The bytes of an image with these (identifier, data) pairs and a terminator."""
    return b"".join(struct.pack(">HH", number, 4 + len(data)) + data for number, data in tags) + b"\0\0\0\4"


class Host:
    """A host of a board, in a process group of its own."""

    def __init__(self, attack, board, **others):
        self.board, self.text = board, b""
        self.process = attack.start("--board", board / "board.toml", "--format", "json", "run", start_new_session=True,
                                    stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, **others)
        os.set_blocking(self.process.stdout.fileno(), False)

    def await_event(self, name):
        """Waits for an event of that name. Returns all events since the last call; empty if the host ends first."""
        end = time.monotonic() + BOUND
        while b'{"event":"%s"' % name.encode() not in self.text:
            if not select.select([self.process.stdout], [], [], max(0.0, end - time.monotonic()))[0]:
                raise Lost(f"the host has not reported '{name}' within {BOUND} s")
            data = self.process.stdout.read()
            if data == b"":
                return b""
            self.text += data or b""
        text, self.text = self.text, b""
        return text

    def ask(self, method="Status"):
        try:
            return hosting.ask(self.board / "host.socket", method)["parameters"]
        except (OSError, ValueError, KeyError) as error:
            raise Lost(f"the host does not answer: {error!r}") from error

    def end(self, number=signal.SIGTERM, is_ready=True):
        """Ends the host, and makes sure that none of its processes is left."""
        self.process.send_signal(number)
        try:
            status = self.process.wait(BOUND)
        except subprocess.TimeoutExpired as error:
            raise Lost(f"a host has not ended within {BOUND} s of signal {number}") from error
        is_killed = number == signal.SIGKILL or not is_ready  # a host that just starts may have no signal handler yet
        expect(status == 0 or (is_killed and status == -number), f"a host ended with status {status}")
        with contextlib.suppress(ProcessLookupError):
            os.killpg(self.process.pid, 0)
            raise Lost("a process of a host has survived it")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        self.process.stdout.close()


def can_be_stranger():
    """Whether this program may become another user, and that user id exists here."""
    try:
        return subprocess.run(["true"], user=STRANGER, group=STRANGER, extra_groups=[], check=False).returncode == 0
    except (OSError, ValueError):
        return False


@contextlib.contextmanager
def stranger(work):
    """Runs `work` in a process of another user until the end of the block. `work` gets a function that sends bytes,
    the block gets the descriptor that receives them."""
    receiver, sender = os.pipe()
    process = os.fork()
    if process == 0:
        try:
            os.setgroups([])
            os.setresgid(STRANGER, STRANGER, STRANGER)
            os.setresuid(STRANGER, STRANGER, STRANGER)
            ctypes.CDLL(None).prctl(1, signal.SIGKILL)  # when the parent ends
            work(lambda data: os.write(sender, data))
        finally:
            os._exit(1)
    os.close(sender)
    try:
        yield receiver
    finally:
        os.kill(process, signal.SIGKILL)
        os.waitpid(process, 0)
        os.close(receiver)
