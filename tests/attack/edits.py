"""Rounds that interrupt and disturb edits of descriptor images. Afterwards an image must be the old or the new one."""
import contextlib
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import time

from parts import Lost, await_true, expect, image_of

BACKUP = re.compile(r"[^.].*-\d{8}T\d{6}Z\.\w{6}")
# boardctl reads this device in pieces, so that an edit can happen between two of them.
LARGE_DEVICE = '[descriptor]\ndevice = "large.bin"\nread_chunk = 16\nsize = 4096\n'


class Target:
    """An image to be edited: a file, a block device, or the file in place of a simulated board's device."""

    def __init__(self, name, path, where, size=0):
        self.name, self.path, self.where, self.size = name, pathlib.Path(path), where, size
        self.tags, self.content, self.span = [], b"", 0.005

    def set(self, tags):
        self.tags, self.content = tags, image_of(tags).ljust(self.size, b"\xff")
        with open(self.path, "r+b" if self.size else "wb") as file:
            file.write(self.content)
        self.path.chmod(0o600)

    def after(self, tags):
        """All bytes after an edit that leaves these tags. A device keeps what is behind the image."""
        image = image_of(tags)
        return image + (self.content[len(image):] if self.size else b"")


@contextlib.contextmanager
def targets(attack):
    """A target of each kind, in folders that hold nothing else."""
    board = attack.make_board("edited")
    (attack.folder / "images").mkdir(exist_ok=True)
    file = attack.folder / "images" / "image"
    found = [Target("file", file, ["-i", file]),
             Target("simulated device", board / "eeprom.bin", ["--board", board / "board.toml"], 512)]
    with contextlib.ExitStack() as stack:
        with tempfile.NamedTemporaryFile(dir=attack.folder) as backing:
            backing.truncate(512)
            made = subprocess.run(["losetup", "--find", "--show", backing.name], capture_output=True, text=True,
                                  check=False)
            if made.returncode == 0:
                loop = made.stdout.strip()
                stack.enter_context(open(loop, "rb"))
                # The kernel removes the device once nobody has it open, even if this program is killed.
                subprocess.run(["losetup", "--detach", loop], check=True)
                found.append(Target("block device", loop, ["-i", loop], 512))
            else:
                attack.left_out["edits of a block device"] = made.stderr.strip()
        for each in found:
            each.set([(number, os.urandom(8)) for number in range(100, 104)])
        clear_backups(attack)
        yield found


def random_edit(chance, tags):
    """The words of an edit, and the tags after it."""
    kind = chance.choice(["put", "put", "remove" if len(tags) > 2 else "add", "insert" if len(tags) < 8 else "remove"])
    data = chance.randbytes(2 * chance.randint(1, 20))
    unused = next(number for number in range(100, 200) if number not in dict(tags))
    at = chance.randrange(len(tags))
    number = tags[at][0]
    if kind == "remove":
        return [kind, str(number)], tags[:at] + tags[at + 1:]
    if kind == "put":
        return [kind, f"{number}=hex:{data.hex()}"], tags[:at] + [(number, data)] + tags[at + 1:]
    at = at if kind == "insert" else len(tags)
    words = [kind, *([str(at)] if kind == "insert" else []), f"{unused}=hex:{data.hex()}"]
    return words, tags[:at] + [(unused, data)] + tags[at:]


def check_backups(attack, target):
    """Each backup with a full name is complete, and none can be read by everybody."""
    for path in attack.backups.iterdir():
        mode = path.stat().st_mode & 0o777
        expect(not mode & 0o007, f"everybody may read {path.name}, but not the image (mode {mode:o})")
        is_backup = BACKUP.fullmatch(path.name)
        expect(not is_backup or path.read_bytes() == target.content, f"the backup {path.name} is not whole")
        if not path.name.startswith("unfinished-"):  # a journal is still needed
            attack.counts["backups, whole" if is_backup else "backups, without their name yet"] += 1
            path.unlink()


def clear_backups(attack):
    shutil.rmtree(attack.backups, ignore_errors=True)
    attack.backups.mkdir(parents=True)


def check_image(target, words, tags, is_done=False):
    """The image must be the new one or, if the edit is not done, the old one. Returns whether it is the new one."""
    found, new = target.path.read_bytes(), target.after(tags)
    if found == new:
        target.tags, target.content = tags, new
    elif found != target.content or is_done:
        target.set(target.tags)
        raise Lost(f"{target.name}: after {' '.join(words)} the image is {found.hex()}")
    return found == new


def complete_edit(attack, target):
    """Makes an undisturbed edit, which must also remove what others left beside the image."""
    words, tags = random_edit(attack.chance, target.tags)
    done = attack.call("bd", *words, "-y", "-q", *target.where)
    expect(done.returncode == 0, f"{target.name}: the next edit fails: {done.stderr}")
    check_backups(attack, target)
    check_image(target, words, tags, is_done=True)
    attack.counts["edits afterwards, nothing left beside"] += 1
    if target.name == "file":
        left = [path.name for path in target.path.parent.iterdir() if path != target.path]
        for name in left:
            (target.path.parent / name).unlink()
        expect(not left, f"left beside the image after the next edit: {' '.join(left)}")


def kills(attack, end):
    """Edits that are killed at a random moment."""
    with targets(attack) as found:
        while time.monotonic() < end:
            target = attack.chance.choice(found)
            words, tags = random_edit(attack.chance, target.tags)
            if attack.chance.random() < 0.3:
                words += ["--backup", f"{attack.backups}/named-20000101T000000Z.backup"]
            with attack.start("bd", *words, "-y", "-q", *target.where, stderr=subprocess.DEVNULL) as process:
                time.sleep(attack.chance.random() * target.span)
                # The span approaches 1.5 times an edit's duration, so two of three edits are killed before they end.
                target.span *= 1.02 if process.poll() is None else 0.96
                process.kill()
            expect(process.returncode in (0, -signal.SIGKILL), f"an edit ends with status {process.returncode}")
            check_backups(attack, target)
            is_new = check_image(target, words, tags, is_done=process.returncode == 0)
            if process.returncode == 0:
                attack.counts["edits that ended before they were killed"] += 1
            else:
                attack.counts[f"edits of a {target.name} killed"] += 1
                attack.counts[f"killed edits that left the {'new' if is_new else 'old'} image"] += 1
            if attack.chance.random() < 0.2:
                complete_edit(attack, target)


# The calls that an edit needs, then all calls on paths or descriptors. "?": not every machine has the call.
CALLS = ("?openat", "read,pread64", "?pwrite64", "fsync", "?rename,?renameat,?renameat2", "fchmod,fchown", "flock",
         "?newfstatat,fstat,?fstat64", "write", "%file", "%desc")


def errors(attack, end):
    """Edits in which the nth system call of a kind fails, and all later ones of that kind."""
    with targets(attack) as found:
        while time.monotonic() < end:
            target = attack.chance.choice(found)
            words, tags = random_edit(attack.chance, target.tags)
            calls, error = attack.chance.choice(CALLS), attack.chance.choice(("ENOSPC", "EIO", "EROFS", "EMFILE"))
            plan = f"inject={calls}:error={error}:when={attack.chance.randint(1, 100 if '%' in calls else 8)}+"
            done = attack.call("bd", *words, "-y", "-q", *target.where,
                               before=("strace", "-qq", "-o", "/dev/null", "-e", plan))
            attack.counts["edits with failing calls"] += 1
            check_backups(attack, target)
            is_new = check_image(target, words, tags, is_done=done.returncode == 0)
            if done.returncode and calls not in ("write", "%desc"):  # if these fail, messages may fail too
                expect("boardctl: " in done.stderr and (not is_new or re.search("written|replaced", done.stderr)),
                       f"{plan}: status {done.returncode}, the new image: {is_new}, the message: {done.stderr}")
            complete_edit(attack, target)


def full_disks(attack, end):
    """Edits that make an image larger on a disk without room, or without room for another file."""
    disk = attack.folder / "disk"
    disk.mkdir(exist_ok=True)
    page = os.sysconf("SC_PAGESIZE")
    while time.monotonic() < end:
        limit, is_spare = attack.chance.choice((("size", False), ("size", True), ("nr_inodes", False)))
        amount = 3 * page if limit == "size" else 2
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", f"{limit}={amount}", "full", disk], capture_output=True,
                                 text=True, check=False)
        if mounted.returncode:
            attack.left_out["edits on a full disk"] = mounted.stderr.strip()
            return
        try:
            target = Target("file", disk / "image", ["-i", disk / "image"])
            target.set([(100, bytes(100))])
            if limit == "size":
                (disk / "filler").write_bytes(bytes(page * (1 if is_spare else 2)))
            words, tags = ["add", "101=hex:" + "5a" * page], [*target.tags, (101, b"\x5a" * page)]
            done = attack.call("bd", *words, "-q", *target.where)
            attack.counts["edits on a full disk"] += 1
            expect(done.returncode == 1 and "No space left on device" in done.stderr,
                   f"on a full disk: status {done.returncode}, {done.stderr}")
            expect(not check_image(target, words, tags), "a full disk took an image")
            left = {path.name for path in disk.iterdir()} - {"image", "filler"}
            expect(not left, f"left on a full disk: {left}")
        finally:
            subprocess.run(["umount", disk], check=True)
            clear_backups(attack)


def editors(attack, end):
    """Ten edits at once. Each adds its own tag; the image must hold the tags of all edits that succeed."""
    with targets(attack) as found:
        while time.monotonic() < end:
            target = attack.chance.choice(found)
            target.set([(99, b"\0\0")])
            numbers = range(100, 110)
            running = [attack.start("bd", "add", f"{number}=hex:{number:04x}", "-y", "-q", *target.where,
                                    stderr=subprocess.DEVNULL) for number in numbers]
            for process in running:
                process.wait()
            done = [number for number, process in zip(numbers, running) if process.returncode == 0]
            attack.counts["edits at once"] += len(done)
            image = target.path.read_bytes()
            size = image.find(b"\0\0\0\4")
            chunks = sorted(image[at:at + 6] for at in range(6, size, 6))
            expect(chunks == [image_of([(number, number.to_bytes(2, "big"))])[:6] for number in done],
                   f"{target.name}: of ten editors {len(done)} succeeded, but the image is {image.hex()}")
            clear_backups(attack)


def readers(attack, end):
    """Reads while a device is written again and again. Each read returns the bytes of one write, not a mixture."""
    board = attack.make_board("read")
    profile = board / "board.toml"
    profile.write_text("simulated = true\n" + LARGE_DEVICE, encoding="ascii")
    images, shown = [], []
    for letter in b"AB":
        images.append(attack.folder / f"image-{letter:c}")
        images[-1].write_bytes(image_of([(number, b"%c" % letter * 50) for number in range(100, 160)]))
        (board / "large.bin").write_bytes(images[-1].read_bytes().ljust(4096, b"\xff"))
        shown.append(attack.call("bd", "dump", "--board", profile).stdout)
    writer = None
    try:
        while time.monotonic() < end:
            if writer is None or writer.poll() is not None:
                expect(writer is None or writer.returncode == 0, "a write fails beside readers")
                images.reverse()
                writer = attack.start("bd", "write", images[0], "-y", "-q", "--board", profile,
                                      stderr=subprocess.DEVNULL)
            read = attack.call("bd", "dump", "--board", profile)
            attack.counts["reads beside writes"] += 1
            expect(read.returncode == 0 and read.stdout in shown,
                   f"a read beside writes gives a mixture, status {read.returncode}: {read.stderr}")
    finally:
        if writer is not None:
            await_true("the end of a write", lambda: writer.poll() is not None)
        clear_backups(attack)
