#!/usr/bin/env python3
"""Generates the shell completions of a program from its `--help` and that of each command.

usage: packaging/completions.py PROGRAM FOLDER
writes FOLDER/PROGRAM (bash), FOLDER/_PROGRAM (zsh) and FOLDER/PROGRAM.fish. The templates are
written for boardctl; another program's name replaces it.
"""
import pathlib
import re
import subprocess
import sys

FILES = {"FILE", "IMAGE", "DIR", "SOCKET"}  # placeholders in a help text that stand for a file name
MOST_REPEATED = 20  # words that are completed for an argument that can be repeated
HERE = pathlib.Path(__file__).parent


def sections(text):
    """Returns the entries below each heading of a help text: (left column, description)."""
    found, heading = {}, None
    for line in text.splitlines():
        if re.fullmatch(r"[A-Z][a-z]+:", line):
            heading = found.setdefault(line[:-1], [])
        elif not line:
            heading = None
        elif heading is None:
            continue
        elif line.startswith(" " * 30):  # the rest of a description
            left, description = heading[-1]
            heading[-1] = (left, f"{description} {line.strip()}".strip())
        else:
            left, _, description = line.strip().partition("  ")
            heading.append((left, description.strip()))
    return found


def words_of(kind):
    """Returns the possible values of an argument as rows of words: "@" is a file, "*" any text, and
    every other word stands for itself."""
    count = MOST_REPEATED if kind.endswith(" ...") else 1
    kind = kind.removesuffix(" ...")
    if kind in FILES:
        return [["@"] * count]
    return [["*" if re.search(r"[^a-z0-9]", word) else word for word in row.split()]
            for row in kind.split("|")]


class Completions:
    def __init__(self, program):
        self.program = program
        self.name = pathlib.Path(program).name
        self.commands = []  # (path, name, text)
        self.options = []  # (path, names, description, possible values)
        self.arguments = []  # (path, row)
        self.walk("")

    def walk(self, path):
        call = [self.program, *path.split(), "--help"]
        found = sections(subprocess.run(call, check=True, capture_output=True, text=True).stdout)
        for name, text in found.get("Subcommands", []):
            self.commands.append((path, name, text))
            self.walk(f"{path} {name}".strip())
        for left, text in found["Options"]:
            names, _, kind = re.sub(" (REQUIRED|Excludes: .*)$", "", left).partition(" ")
            values = [row[0] for row in words_of(kind)] if kind else []
            self.options.append((path, names.split(","), text, values))
        rows = [[]]
        for left, _ in found.get("Positionals", []):
            name, _, kind = left.removesuffix(" REQUIRED").partition(" ")
            rows = [row + more for row in rows for more in words_of(kind or name)]
        if rows != [[]]:
            self.arguments += [(path, row) for row in rows]

    def bash(self):
        return self.arrays("    ['{}']='{}'", lambda name, text: name)

    def zsh(self):
        return self.arrays("    '{}' '{}'", lambda name, text: f"{name}:{text}")

    def fish(self):
        """Yields the lines of the tables: one list per kind of word. fish has no arrays indexed by words."""
        for name, rows in self.tables(lambda name, text: f"{name}\t{text}"):
            yield f"set -g _{self.name}_{name} \\"
            for path, line in rows:
                line = f"{path}\t{line}".replace("\\", "\\\\").replace("'", "\\'")
                yield f"    '{line}' \\"
            yield ""

    def arrays(self, entry, described):
        """Yields the lines of the tables: one array per kind of word, indexed by the command."""
        for name, rows in self.tables(described):
            lines = {}
            for path, line in rows:
                lines.setdefault(path, []).append(line.replace("'", "'\\''"))
            yield f"_{self.name}_{name}=("
            for path, each in lines.items():
                yield entry.format(path, "\n".join(each))
            yield ")"

    def tables(self, described):
        """Yields the tables: (name, rows of a command and what belongs to it)."""
        for name, rows in (
                ("commands", [(path, described(name, text)) for path, name, text in self.commands]),
                ("options", [(path, described(name, text)) for path, names, text, _ in self.options for name in names]),
                ("values", [(path, " ".join([name, *values])) for path, names, _, values in self.options if values
                            for name in names]),
                ("arguments", [(path, " ".join(row)) for path, row in self.arguments])):
            yield name, [(f"{self.name} {path}".strip(), line) for path, line in rows]


def main():
    found, folder = Completions(sys.argv[1]), pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    for shell, name, tables in (("bash", found.name, found.bash()), ("zsh", f"_{found.name}", found.zsh()),
                                ("fish", f"{found.name}.fish", found.fish())):
        template = (HERE / f"completion.{shell}").read_text().replace("boardctl", found.name)
        (folder / name).write_text(template.replace("# TABLES\n", "\n".join(tables) + "\n"))


main()
