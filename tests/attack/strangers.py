"""Rounds in which another user, who has no rights, meddles with paths and locks that hosts and edits use."""
import contextlib
import ctypes
import fcntl
import os
import pathlib
import select
import time

from edits import Target, clear_backups
from hosts import check_alive
from parts import PIPE, Host, expect, image_of, stranger

EXCHANGE = 2  # of renameat2
AT_FDCWD = -100
SYMLINKS = pathlib.Path("/proc/sys/fs/protected_symlinks")
PLANTED, LINK = "/tmp/planted", "/tmp/link"


def steal(send):
    """Reads what comes through the pipe, forever, and sends it."""
    while True:
        with contextlib.suppress(OSError):
            pipe = os.open(PIPE, os.O_RDONLY | os.O_NONBLOCK)
            with contextlib.suppress(BlockingIOError):
                for _ in range(1000):
                    send(os.read(pipe, 4096))
            os.close(pipe)


def exchange_with(victim):
    """Makes a pipe that everybody may use, puts it in the place of the host's one, and exchanges it with a link to the
    victim, forever. Reads what comes through it."""
    def work(send):
        os.umask(0)
        os.mkfifo(PLANTED)
        os.symlink(victim, LINK)
        pipe = os.open(PLANTED, os.O_RDWR | os.O_NONBLOCK)
        libc = ctypes.CDLL(None)
        if not os.path.lexists(PIPE):
            os.rename(PLANTED, PIPE)
            os.mkfifo(PLANTED)
        else:  # the host's; works only in a folder that is not sticky
            libc.renameat2(AT_FDCWD, PLANTED.encode(), AT_FDCWD, PIPE.encode(), EXCHANGE)
        send(b"test")  # ready
        while True:
            for _ in range(1000):
                libc.renameat2(AT_FDCWD, LINK.encode(), AT_FDCWD, PIPE.encode(), EXCHANGE)
            with contextlib.suppress(BlockingIOError):
                send(os.read(pipe, 4096))
    return work


@contextlib.contextmanager
def as_was():
    """Gives /tmp and the kernel's setting back as they were, and removes what the stranger has made."""
    mode, setting = os.stat("/tmp").st_mode, SYMLINKS.read_text(encoding="ascii")
    try:
        yield
    finally:
        os.chmod("/tmp", mode)
        if SYMLINKS.read_text(encoding="ascii") != setting:
            SYMLINKS.write_text(setting, encoding="ascii")
        for path in (PIPE, PLANTED, LINK):
            pathlib.Path(path).unlink(missing_ok=True)


def stolen(receiver):
    """What the stranger has read, except what the LED service writes to try a pipe."""
    found = b""
    while select.select([receiver], [], [], 0)[0]:
        found += os.read(receiver, 65536)
    return found.replace(b"test", b"")


def swaps(attack, end):
    """The pipe's path is exchanged in a loop with a link to a file, while hosts start."""
    board = attack.make_board("swapped")
    victim = board / "eeprom.bin"
    content = victim.read_bytes()
    with as_was():
        while time.monotonic() < end:
            is_sticky = attack.chance.random() < 0.5
            os.chmod("/tmp", 0o1777 if is_sticky else 0o777)
            if attack.may_set:
                SYMLINKS.write_text(attack.chance.choice("01"), encoding="ascii")
            with stranger(exchange_with(str(victim))) as receiver:
                expect(os.read(receiver, 4) == b"test", "the stranger has not started")
                for _ in range(10):
                    with Host(attack, board) as host:
                        text = host.await_event("ready")
                        sent = attack.call("leds", "send", "lamp", "test")
                        where = "sticky" if is_sticky else "open"
                        if text is not None:
                            host.end()
                        attack.counts["hosts started amid swaps"] += 1
                        expect(victim.read_bytes() == content, f"{where} folder: a host has written over another file")
                        expect(text and b'"kind":"leds"' in text, f"{where} folder: a host takes commands from a stranger's pipe")
                        expect(not stolen(receiver) and sent.returncode == 1,
                               f"{where} folder: a line was sent into a stranger's pipe")
            for path in (PIPE, PLANTED, LINK):
                pathlib.Path(path).unlink(missing_ok=True)


def thefts(attack, end):
    """Another user tries to read the commands that a host takes."""
    board = attack.make_board("robbed")
    with as_was():
        while time.monotonic() < end:
            pathlib.Path(PIPE).unlink(missing_ok=True)
            with stranger(steal) as receiver, Host(attack, board, umask=attack.chance.choice((0, 0o002, 0o022, 0o007))) as host:
                expect(host.await_event("ready"), "a host ends")
                for _ in range(20):
                    attack.call("leds", "send", "lamp", "test")
                    attack.counts["commands beside a thief"] += 1
                    found = stolen(receiver)
                    expect(not found, f"another user reads commands: {found[:100]}")
                check_alive(attack, host)
                host.end()


def hold_locks(paths, kind):
    def work(send):
        held = []
        for path in paths:
            with contextlib.suppress(OSError):
                held.append(os.open(path, os.O_RDONLY | os.O_NONBLOCK))
                fcntl.flock(held[-1], kind | fcntl.LOCK_NB)
        send(b"held")
        select.select([], [], [])
    return work


def locks(attack, end):
    """Another user holds locks on everything that he may read."""
    board = attack.make_board("locked")
    os.makedirs(attack.folder / "public", exist_ok=True)
    image = attack.folder / "public" / "image"
    target = Target("file", image, ["-i", image])
    while time.monotonic() < end:
        target.set([(100, b"old!")])
        image.chmod(0o644)
        kind = attack.chance.choice((fcntl.LOCK_EX, fcntl.LOCK_SH))
        wait = attack.chance.choice("01")
        with stranger(hold_locks([image], kind)) as receiver:
            expect(os.read(receiver, 4) == b"held", "the stranger has no lock")
            done = attack.call("bd", "put", "100=text:new!", "--wait", wait, *target.where)
            attack.counts["edits beside a stranger's lock"] += 1
            expect(done.returncode == 1 and "lock" in done.stderr and image.read_bytes() == image_of(target.tags),
                   f"beside a stranger's lock an edit ends with status {done.returncode}: {done.stderr}")
        paths = [path for path in board.rglob("*") if path.name != "eeprom.bin"] + [PIPE]
        with stranger(hold_locks(paths, kind)) as receiver, Host(attack, board) as host:
            expect(os.read(receiver, 4) == b"held", "the stranger has no lock")
            text = host.await_event("ready")
            attack.counts["hosts beside a stranger's locks"] += 1
            expect(text and b'{"event":"fault"' not in text, f"beside a stranger's locks a host starts with a fault: {text}")
            check_alive(attack, host)
            host.end()
        clear_backups(attack)
