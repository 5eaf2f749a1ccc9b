"""Tests documentation pages: pages.py [--program NAME=CALL]... PAGE|FOLDER...

Notation in a page:
    ```console        a line with `$ ` is a command (`> ` continues it), followed by its output
    ```toml NAME      in any language: creates the file NAME before the next command
    ```cpp SOURCE     an excerpt of SOURCE, a path relative to the page
    ![...](PICTURE)   a picture that the page's commands create; a PICTURE in another folder is
                      another page's picture or a screenshot, and need only exist
    [...](PATH)       PATH must exist
The commands of a page run in one shell, in an empty folder, with the programs in the path. A
command that exits with a status other than 0 must be followed by `$ echo $?`. In expected output,
`...` matches any text within a line, and any lines if it is alone on a line. If a picture differs,
the new one is kept in the current folder.
"""
import argparse
import difflib
import fcntl
import os
import pathlib
import re
import subprocess
import sys
import tempfile

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "support"))
from hosting import take_tmp

FENCE = re.compile(r"^```(\w*) ?(.*)$")
PICTURE = re.compile(r"!\[[^]]*\]\(([^)]+)\)")
LINK = re.compile(r"\]\((?!https?:)([^)#]+)[^)]*\)")


class Command:
    def __init__(self, line, text):
        self.line, self.text, self.expected = line, text, []


class Page:
    """The commands, files, quotations and pictures of a page, each with its line number."""

    def __init__(self, path):
        self.path, self.steps, self.quotations, self.pictures = path, [], [], []
        self.faults = []  # in the notation
        lines = path.read_text(encoding="utf-8").splitlines()
        number = 0
        while number < len(lines):
            fence = FENCE.match(lines[number])
            self.pictures += [(number + 1, name) for name in PICTURE.findall(lines[number]) if "/" not in name]
            for name in LINK.findall(lines[number]):
                if not (path.parent / name).exists():
                    self.faults.append(f"{path}:{number + 1}: {name} does not exist")
            number += 1
            if not fence:
                continue
            first = number
            while number < len(lines) and lines[number] != "```":
                number += 1
            self.take(fence.group(1), fence.group(2), first, lines[first:number])
            number += 1

    def take(self, language, name, first, lines):
        if language == "console":
            self.take_console(first, lines)
        elif language == "cpp" and name:
            self.quotations.append((first, name, lines))
        elif name:
            self.steps.append((name, "".join(line + "\n" for line in lines)))

    def take_console(self, first, lines):
        command = None
        for number, line in enumerate(lines, first + 1):
            if line.startswith("$ "):
                command = Command(number, line[2:])
                self.steps.append(command)
            elif command is None:
                self.faults.append(f"{self.path}:{number}: output without a command")
            elif line.startswith("> ") and not command.expected:
                command.text += "\n" + line[2:]
            else:
                command.expected.append(line)


def script(page, work, results):
    """A shell script of the page's steps. The output of command k goes into the file k, its status
    into k.status."""
    text = f"cd '{work}'\n"
    for number, step in enumerate(page.steps):
        if isinstance(step, Command):
            out = f"'{results}/{number}'"
            text += f"{{ {step.text}\n}} >{out} 2>&1 </dev/null\n"
            text += f"status=$?; echo $status >{out}.status; (exit $status)\n"
        else:
            source = results / f"{number}.file"
            source.write_text(step[1], encoding="utf-8")
            text += f"cp '{source}' '{step[0]}'\n"
    return text


def pattern(expected):
    """A regular expression that matches the expected lines."""
    return "".join("(?:.*\n)*" if line == "..." else "[^\n]*".join(map(re.escape, line.split("..."))) + "\n"
                   for line in expected)


def judge(page, results):
    for number, step in enumerate(page.steps):
        if not isinstance(step, Command):
            continue
        where = f"{page.path}:{step.line}: {step.text}"
        status_file = results / f"{number}.status"
        if not status_file.exists():
            yield f"{where}\ndid not run to its end"
            return
        printed = (results / str(number)).read_text(encoding="utf-8", errors="backslashreplace")
        status = int(status_file.read_text(encoding="ascii"))
        if not re.fullmatch(pattern(step.expected), printed):
            diff = difflib.unified_diff(
                step.expected, printed.splitlines(), "the page", "printed", lineterm="", n=100)
            yield "\n".join([where, *diff])
        following = page.steps[number + 1 :]
        documented = following and isinstance(following[0], Command) and following[0].text == "echo $?"
        if status != 0 and not documented:
            yield f"{where}\nexits with {status}, which the page does not say"


def check_quotations(page):
    for line, name, quoted in page.quotations:
        source = (page.path.parent / name).read_text(encoding="utf-8").splitlines()
        if "\n".join(map(str.strip, quoted)) not in "\n".join(map(str.strip, source)):
            yield f"{page.path}:{line}: is not in {name}"


def check_pictures(page, work):
    for line, name in page.pictures:
        shown, made = page.path.parent / name, work / pathlib.Path(name).name
        if not made.exists():
            yield f"{page.path}:{line}: no command of the page creates {name}"
        elif not shown.exists() or shown.read_bytes() != made.read_bytes():
            kept = pathlib.Path.cwd() / made.name
            kept.write_bytes(made.read_bytes())
            yield f"{page.path}:{line}: {name} differs from the new picture, kept as {kept}"


def run(path, programs):
    """Returns the faults of a page and the number of its commands."""
    page = Page(path)
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        work, results, path_folder = root / "work", root / "results", root / "bin"
        for each in (work, results, path_folder):
            each.mkdir()
        for name, program in programs.items():  # as files, so that a page's scripts find them too
            (path_folder / name).write_text(f'#!/bin/sh\nexec {program} "$@"\n', encoding="utf-8")
            (path_folder / name).chmod(0o755)
        environment = dict(os.environ, LC_ALL="C.UTF-8", TZ="UTC", HOME=str(work), NO_COLOR="1",
                           XDG_STATE_HOME=str(root / "state"), PATH=f"{path_folder}:{os.environ['PATH']}")
        subprocess.run(["bash", "-c", script(page, work, results)], env=environment, check=False)
        return [*page.faults, *judge(page, results), *check_quotations(page), *check_pictures(page, work)], len(
            [step for step in page.steps if isinstance(step, Command)])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", action="append", default=[], metavar="NAME=CALL")
    parser.add_argument("pages", nargs="+", type=pathlib.Path)
    words = parser.parse_args()
    programs = dict(word.split("=", 1) for word in words.program)
    called = [word for word in " ".join(programs.values()).split() if "/" in word]
    if not take_tmp(*called, *words.pages, os.getcwd()):  # else locks out other tests that use the LED pipe
        fcntl.flock(os.open("/tmp", os.O_RDONLY), fcntl.LOCK_EX)
    failed = False
    pages = [found for page in words.pages for found in (sorted(page.glob("*.md")) if page.is_dir() else [page])]
    for page in pages:
        faults, commands = run(page, programs)
        for fault in faults:
            print(fault, end="\n\n")
        failed = failed or bool(faults)
        print(f"{page}: {commands} commands, {len(faults)} faults")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
