"""Counts what one more item costs a command: in instructions, which do not depend on the machine's load."""

import os
import subprocess
import tempfile

import start

# The numbers of items. The cost of an item is the extra cost of the second or third number over the first, divided by
# the extra items. This leaves out the cost of starting the program, which would hide growth.
MANY = (10, 1000, 10000)
KINDS = {"fan": ("170", "maximum = 255"), "thermal": ("30000", "maximum = 85"), "power": ("1", ""), "led": ("1", "")}


def image(tags):
    """An image of tags with two bytes of data: addresses, tags that share two identifiers, and unique tags."""
    ids = [(1, 5, 0x800E, 1000 + i)[i % 4] for i in range(tags)]
    chunks = [each.to_bytes(2, "big") + b"\0\6" + i.to_bytes(2, "big") for i, each in enumerate(ids)]
    return b"".join(chunks) + b"\0\0\0\4"


def all_set(tags):
    """An assignment for each tag of `image(tags)`."""
    places = [(f"1.{i // 4}", f"5.{i // 4}", f"0x800E.{i // 4}", str(1000 + i))[i % 4] for i in range(tags)]
    return [f"{place}=u16:1" for place in places]


def all_put(tags):
    """Assignments that add this number of tags; every fourth tag is an address."""
    return [f"{20000 + i}=hex:" if i % 4 else f"1=mac:02:00:00:00:{i >> 8:02x}:{i & 255:02x}/{i + 100}"
            for i in range(1, tags + 1)]


def table(rows):
    """LED commands, several for each pair of words."""
    actions = ["on", "blink", "flash", "off"]
    return "command = [" + ",\n".join(
        f'{{word1="w{i // 4}",word2="x{i % 2}",number={i},mask={1 << i % 4},action="{actions[i % 4]}",'
        f"group={i % 5 + 1},time_ms={i % 7 * 100}}}" for i in range(rows)) + "]\n"


def object_with(keys):
    """A list of one tag. Its name, which boardctl ignores, is an object."""
    return '[{"id":5,"data":"","name":{' + ",".join(f'"k{i}":1' for i in range(keys)) + "}}]"


class Growth:
    """The inputs, in a folder that exists until the end of the `with` block."""

    def __init__(self, tree):
        self.boardctl = tree + "/bin/boardctl"

    def __enter__(self):
        self.held = tempfile.TemporaryDirectory()
        self.folder = self.held.name + "/"
        for tags in MANY:
            with open(f"{self.folder}image{tags}", "wb") as file:
                file.write(image(tags))
            with open(f"{self.folder}list{tags}", "wb") as file:
                subprocess.run([self.boardctl, "bd", "dump", file.name.replace("list", "image")], stdout=file,
                               check=True)
            with open(f"{self.folder}keys{tags}", "w", encoding="utf-8") as file:
                file.write(object_with(tags))
        return self

    def __exit__(self, *_):
        self.held.cleanup()

    def board(self, name, change):
        """Makes a simulated board and changes its profile."""
        folder = self.folder + name
        subprocess.run([self.boardctl, "sim", "create", folder], stdout=subprocess.DEVNULL, check=True)
        with open(folder + "/board.toml", "r+", encoding="utf-8") as file:
            text = change(file.read(), folder)
            file.seek(0)
            file.truncate()
            file.write(text)

    def add_boards(self):
        for rows in MANY:
            self.board(f"rows{rows}", lambda text, _, rows=rows: text[:text.index("[[leds.command]]")].replace(
                "[leds]\n", "[leds]\n" + table(rows)))
            self.board(f"devices{rows}", lambda text, folder, rows=rows: text + self.devices(folder, rows))
            self.board(f"monitors{rows}", lambda text, folder, rows=rows: text + self.monitors(folder, rows))

    @staticmethod
    def devices(folder, count):
        os.mkdir(folder + "/many")
        text = ""
        for i in range(count):
            kind = list(KINDS)[i % len(KINDS)]
            content, key = KINDS[kind]
            with open(f"{folder}/many/{i}", "w", encoding="utf-8") as file:
                file.write(content + "\n")
            text += f'[[{kind}]]\nname = "d{i}"\ndevice = "many/{i}"\ndescription = "d"\n{key}\n'
        return text

    @staticmethod
    def monitors(folder, count):
        """Fans whose devices are files of hardware monitors. Creates these monitors in a simulated sysfs."""
        text = ""
        for i in range(count):
            monitor = f"{folder}/sys/class/hwmon/hwmon{i}"
            os.makedirs(monitor)
            for name, content in ("name", f"chip{i}"), ("pwm1", "170"):
                with open(f"{monitor}/{name}", "w", encoding="utf-8") as file:
                    file.write(content + "\n")
            text += f'[[fan]]\nname = "m{i}"\ndevice = "hwmon:chip{i}/pwm1"\nmaximum = 255\n'
        return text

    def of(self, command, counts, words=lambda count: []):
        """Returns the instructions per item of the largest input, and of the middle one. `words` returns further
        words of the command."""
        few, some, many = (start.instructions(
            [self.boardctl] + [word.replace("@", self.folder).replace("#", str(count)) for word in command.split()] +
            words(count)) for count in counts)
        return (many - few) / (counts[2] - counts[0]), (some - few) / (counts[1] - counts[0])


def figures(tree):
    """Yields for each command its name, the cost of an item in a large input, and the cost in a small one."""
    with Growth(tree) as growth:
        growth.add_boards()
        for command in ("show", "raw", "dump", "check", "get 1.0"):
            yield f"bd {command} per tag", *growth.of(f"bd {command} -i @image#", MANY)
        for name, words in (("bd build", "bd build @list# -o -"), ("bd compare", "bd compare @list# @image#"),
                            ("bd compare, all different", "bd compare @image10 @image#"),
                            ("bd set", "bd set 1.0=hex:0200000000ff0001 -i @image# --dry-run"),
                            ("bd put", "bd put 1=mac:02:00:00:00:00:ff/1 5=u16:7 -i @image# --dry-run"),
                            ("bd write", "bd write @image# -i @image10 --dry-run --force"),
                            ("bd write of a list", "bd write @list# -i @image10 --dry-run --force")):
            yield f"{name} per tag", *growth.of(words, MANY)
        for name, words, more in (("bd set", "bd set -i @image# --dry-run --force", all_set),
                                  ("bd put", "bd put -i @image10 --dry-run", all_put),
                                  ("bd build", "bd build @list10 -o -", all_put)):
            yield f"{name} per assignment", *growth.of(words, MANY, more)
        yield "bd build per key of an object", *growth.of("bd build @keys# -o -", MANY)
        for name, words in (("leds check", "leds check"), ("leds preview", "leds preview --ticks 20"),
                            ("check", "check"), ("info", "info")):
            yield f"{name} per row", *growth.of(words + " --board @rows#/board.toml", MANY)
        for words in ("check", "info", "info --format json", "info --format metrics", "run --for 0"):
            yield f"{words} per device", *growth.of(words + " --board @devices#/board.toml", MANY)
        yield "check per hwmon: name", *growth.of(
            "check --board @monitors#/board.toml --sysfs @monitors#/sys", MANY)


def preview_memory(tree):
    """Returns the memory that a preview of a million ticks needs, and of a thousand ticks."""
    return (start.heap([tree + "/bin/boardctl", "--sim", "leds", "preview", "--ticks", ticks])
            for ticks in ("1000000", "1000"))
