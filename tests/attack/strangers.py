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
from parts import PIPE, Host, expect, faults_in, stranger

EXCHANGE = 2  # of renameat2
AT_FDCWD = -100
SYMLINKS = pathlib.Path("/proc/sys/fs/protected_symlinks")
PLANTED, LINK = "/tmp/planted", "/tmp/link"


def steal(send):
    """Opens the pipe and each of its later replacements as soon as possible, and sends on what it reads from them.
    Sends "test" after the first attempt."""
    pipes, greeting = {}, b"test"
    while True:
        with contextlib.suppress(OSError):
            if (number := os.stat(PIPE).st_ino) not in pipes:
                pipes[number] = os.open(PIPE, os.O_RDONLY | os.O_NONBLOCK)
        for pipe in pipes.values():
            with contextlib.suppress(BlockingIOError):
                send(os.read(pipe, 4096))
        send(greeting)
        greeting = b""


def exchange_with(victim):
    """Makes a pipe that everybody may use, puts it in the place of the host's, and exchanges it with a link to the
    victim, forever. Sends on what it reads from its pipe."""
    def work(send):
        os.umask(0)
        os.mkfifo(PLANTED)
        os.symlink(victim, LINK)
        pipe = os.open(PLANTED, os.O_RDWR | os.O_NONBLOCK)
        libc = ctypes.CDLL(None)
        os.rename(PLANTED, PIPE)  # works even if the host has a pipe, unless /tmp is sticky
        send(b"test")  # ready
        while True:
            for _ in range(1000):
                libc.renameat2(AT_FDCWD, LINK.encode(), AT_FDCWD, PIPE.encode(), EXCHANGE)
            with contextlib.suppress(BlockingIOError):
                send(os.read(pipe, 4096))
    return work


@contextlib.contextmanager
def clear_tmp(attack, is_sticky=True):
    """Removes the pipe; sets the mode of /tmp, perhaps fs.protected_symlinks. Ends by restoring and removing all."""
    mode, setting = os.stat("/tmp").st_mode, SYMLINKS.read_text(encoding="ascii")
    try:
        pathlib.Path(PIPE).unlink(missing_ok=True)
        os.chmod("/tmp", 0o1777 if is_sticky else 0o777)
        if attack.may_set:
            SYMLINKS.write_text(attack.chance.choice("01"), encoding="ascii")
        yield
    finally:
        if attack.may_set:
            SYMLINKS.write_text(setting, encoding="ascii")
        os.chmod("/tmp", mode)
        for path in (PIPE, PLANTED, LINK):
            pathlib.Path(path).unlink(missing_ok=True)


def stolen(receiver):
    """What the stranger has read, except "test", which the LED service writes to test a pipe."""
    found = b""
    while select.select([receiver], [], [], 0)[0]:
        found += os.read(receiver, 65536)
    return found.replace(b"test", b"")


def swaps(attack, end):
    """The pipe's path is exchanged in a loop with a link to a file, while hosts start."""
    board = attack.make_board("swapped")
    victim = board / "eeprom.bin"
    content = victim.read_bytes()
    while time.monotonic() < end:
        is_sticky = attack.chance.random() < 0.5
        where = "sticky folder" if is_sticky else "open folder"
        with clear_tmp(attack, is_sticky), stranger(exchange_with(str(victim))) as receiver:
            expect(os.read(receiver, 4) == b"test", "the stranger has not started")
            for _ in range(10):
                with Host(attack, board) as host:
                    events = host.await_event("ready")
                    sent = attack.call("leds", "send", "lamp", "test")
                    host.end()
                attack.counts[f"hosts started amid swaps, {where}"] += 1
                expect(victim.read_bytes() == content, f"{where}: a host has written over another file")
                expect(any(b'"kind":"leds"' in fault for fault in faults_in(events)),
                       f"{where}: a host takes commands from a stranger's pipe")
                expect(not stolen(receiver) and sent.returncode == 1,
                       f"{where}: a line was sent into a stranger's pipe")


def thefts(attack, end):
    """Another user tries to read the commands that a host takes, perhaps from a pipe that an older host has left."""
    board = attack.make_board("robbed")
    while time.monotonic() < end:
        umask = attack.chance.choice((0, 0o002, 0o022, 0o007))
        with contextlib.ExitStack() as stack:
            stack.enter_context(clear_tmp(attack))
            left = attack.chance.choice((None, 0o622, 0o644, 0o666))
            if left:
                os.mkfifo(PIPE)
                os.chmod(PIPE, left)
            receiver = stack.enter_context(stranger(steal))
            expect(os.read(receiver, 4) == b"test", "the thief has not started")
            host = stack.enter_context(Host(attack, board, umask=umask))
            expect(host.await_event("ready"), "a host ends")
            for _ in range(20):
                attack.call("leds", "send", "lamp", "test")
                attack.counts["commands beside a thief"] += 1
                found = stolen(receiver)
                which = f"a pipe left with mode {left:03o}" if left else f"a pipe made with umask {umask:03o}"
                expect(not found, f"another user reads commands from {which}: {found[:100]}")
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
        expect(done.returncode == 1 and "lock" in done.stderr and image.read_bytes() == target.content,
               f"beside a stranger's lock an edit ends with status {done.returncode}: {done.stderr}")
        # If the descriptor is locked too, the host must report that it can't read it.
        with_descriptor = attack.chance.random() < 0.3
        paths = [path for path in (*board.rglob("*"), PIPE) if with_descriptor or path != board / "eeprom.bin"]
        with stranger(hold_locks(paths, kind)) as receiver:
            expect(os.read(receiver, 4) == b"held", "the stranger has no locks")
            with Host(attack, board) as host:
                events = host.await_event("ready")
                attack.counts["hosts beside a stranger's locks"] += 1
                faults = [fault for fault in faults_in(events)
                          if not with_descriptor or b'"name":"board-descr-driver"' not in fault]
                expect(events and not faults, f"beside a stranger's locks a host starts with {faults}")
                check_alive(attack, host)
                host.end()
        clear_backups(attack)
