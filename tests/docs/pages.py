"""Does what the pages of docs/ say and compares: pages.py [--program NAME=CALL]... PAGE|FOLDER...

In a page
    ```console        each line after `$ ` is a command (`> ` goes on with it), what follows it is all that it prints
    ```toml NAME      any language: makes the file NAME before the next command
    ```cpp SOURCE     is a piece of that file, named from the page
    ![...](PICTURE)   is the file of that name that the commands have made; one with a folder, another page's
    [...](PATH)       is there
A page's commands run in one shell, in an empty folder, with the programs in the path. A command that ends with
another status than 0 is followed by `$ echo $?`. Of what is printed, `...` stands for any text within a line, and
on a line of its own for any lines. A picture that differs is kept in the current folder.
"""
import argparse
import difflib
import os
import pathlib
import re
import subprocess
import sys
import tempfile

FENCE = re.compile(r"^```(\w*) ?(.*)$")
PICTURE = re.compile(r"!\[[^]]*\]\(([^)]+)\)")
LINK = re.compile(r"\]\((?!https?:)([^)#]+)[^)]*\)")


class Command:
    def __init__(self, line, text):
        self.line, self.text, self.expected = line, text, []


class Page:
    """What a page holds of commands, files, quotations and pictures, each with its line."""

    def __init__(self, path):
        self.path, self.steps, self.quotations, self.pictures = path, [], [], []
        self.faults = []  # of the page itself
        lines = path.read_text(encoding="utf-8").splitlines()
        number = 0
        while number < len(lines):
            fence = FENCE.match(lines[number])
            self.pictures += [(number + 1, name) for name in PICTURE.findall(lines[number]) if "/" not in name]
            for name in LINK.findall(lines[number]):
                if not (path.parent / name).exists():
                    self.faults.append(f"{path}:{number + 1}: there is no {name}")
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
    """A shell program of the page's steps; what command k prints is in the file k, its status in k.status."""
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
    """A regular expression of the lines that are expected."""
    parts = []
    for line in expected:
        parts.append("(?:.*\n)*" if line == "..." else "[^\n]*".join(map(re.escape, line.split("..."))) + "\n")
    return "".join(parts)


def judge(page, results):
    for number, step in enumerate(page.steps):
        if not isinstance(step, Command):
            continue
        where = f"{page.path}:{step.line}: {step.text}"
        status_file = results / f"{number}.status"
        if not status_file.exists():
            yield f"{where}\nwas not run to its end"
            return
        printed = (results / str(number)).read_text(encoding="utf-8", errors="backslashreplace")
        status = int(status_file.read_text(encoding="ascii"))
        if not re.fullmatch(pattern(step.expected), printed):
            diff = difflib.unified_diff(
                step.expected, printed.splitlines(), "the page", "printed", lineterm="", n=100)
            yield "\n".join([where, *diff])
        following = page.steps[number + 1 :]
        told = following and isinstance(following[0], Command) and following[0].text == "echo $?"
        if status != 0 and not told:
            yield f"{where}\nends with {status}, of which the page says nothing"


def check_quotations(page):
    for line, name, quoted in page.quotations:
        source = (page.path.parent / name).read_text(encoding="utf-8").splitlines()
        if "\n".join(map(str.strip, quoted)) not in "\n".join(map(str.strip, source)):
            yield f"{page.path}:{line}: does not stand in {name}"


def check_pictures(page, work):
    for line, name in page.pictures:
        shown, made = page.path.parent / name, work / pathlib.Path(name).name
        if not made.exists():
            yield f"{page.path}:{line}: no command of the page makes {name}"
        elif not shown.exists() or shown.read_bytes() != made.read_bytes():
            kept = pathlib.Path.cwd() / made.name
            kept.write_bytes(made.read_bytes())
            yield f"{page.path}:{line}: {name} is not what the page's command makes, now kept as {kept}"


def run(path, programs):
    """The faults of a page."""
    page = Page(path)
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        work, results, path_folder = root / "work", root / "results", root / "bin"
        for made in (work, results, path_folder):
            made.mkdir()
        for name, program in programs.items():
            (path_folder / name).write_text(f'#!/bin/sh\nexec {program} "$@"\n', encoding="utf-8")
            (path_folder / name).chmod(0o755)
        environment = dict(os.environ, PATH=f"{path_folder}:{os.environ['PATH']}", LC_ALL="C.UTF-8", TZ="UTC",
                           HOME=str(work), XDG_STATE_HOME=str(root / "state"), NO_COLOR="1")
        subprocess.run(["bash", "-c", script(page, work, results)], env=environment, check=False)
        return [*page.faults, *judge(page, results), *check_quotations(page), *check_pictures(page, work)], len(
            [step for step in page.steps if isinstance(step, Command)])


def give_private_tmp(paths):
    """Starts this program again with a /tmp of its own, where the machine allows it: the LED pipe has one path on
    every machine. Not where something that is used would be hidden."""
    if any(os.path.realpath(path).startswith("/tmp/") for path in [*paths, os.getcwd(), __file__]):
        return
    apart = ["unshare", "--mount"] + (["--map-root-user"] if os.geteuid() else [])
    mount = "mount -t tmpfs tmp /tmp"
    if subprocess.run([*apart, "sh", "-c", mount], capture_output=True, check=False).returncode == 0:
        again = [*apart, "sh", "-c", mount + ' && exec "$@"', "sh", sys.executable, __file__, "--here", *sys.argv[1:]]
        os.execvp(apart[0], again)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", action="append", default=[], metavar="NAME=CALL")
    parser.add_argument("--here", action="store_true", help="in the /tmp that there is")
    parser.add_argument("pages", nargs="+", type=pathlib.Path)
    words = parser.parse_args()
    programs = dict(word.split("=", 1) for word in words.program)
    if not words.here:
        give_private_tmp([*" ".join(programs.values()).split(), *words.pages])
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
