#!/usr/bin/env python3
"""Runs clang-tidy over the library, the framework, the host and its programs.

usage: tests/tidy.py BUILD
BUILD is a build tree with a compile_commands.json, in which each source compiles alone.

clang-tidy spends most of its time on the headers of other projects, which it reads again for each
source. So the sources of each folder of host/, and of each folder of a program, are joined into
one. Two checks make no sense for joined sources; tests/tree.py does their work.
"""
import collections
import concurrent.futures
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

ALONE = ("framework", "drivers", "services", "sysinfo")  # include few headers; their local names may clash
JOINED = {"host": 2, "tools": 3}  # the number of a path's first parts that name such a folder
CHECKS = "--checks=-misc-unused-using-decls,-bugprone-suspicious-include"
# The analyzer follows each function for this many steps. With its default of 225,000, it takes twice
# as long and finds no more: when 287 functions used a null pointer, it found 126; with this, 128.
STEPS = [f"--extra-arg={word}" for word in ("-Xclang", "-analyzer-config", "-Xclang", "max-nodes=30000")]
ROOT = pathlib.Path(__file__).resolve().parent.parent


def flags_of(command):
    """The words of a compiler call, except its input and output."""
    words = shlex.split(command["command"])
    for option in ("-o", "-c"):
        at = words.index(option)
        del words[at:at + 2]
    return words


def is_joined(path):
    """As in cmake/Unite.cmake, sources beside a program's CMakeLists.txt are not joined."""
    return path.parts[0] in JOINED and not (ROOT / path.parent / "CMakeLists.txt").exists()


def join(paths, joined):
    """Writes the sources into one file. Returns where each line of that file comes from."""
    lines, places = [], [None]
    for path in sorted(paths):
        text = (ROOT / path).read_text().splitlines()
        lines += text
        places += [f"{path}:{number}" for number in range(1, len(text) + 1)]
    joined.write_text("\n".join(lines) + "\n")
    return places


def prepare(build, folder):
    """Writes clang-tidy's input. Yields each source, with the places of its lines if it is joined."""
    groups = collections.defaultdict(dict)
    for command in json.loads((build / "compile_commands.json").read_text()):
        source = pathlib.Path(command["file"])
        if ROOT not in source.parents or build in source.parents:
            continue
        path = source.relative_to(ROOT)
        if path.parts[0] in (*ALONE, *JOINED):
            key = pathlib.Path(*path.parts[:JOINED[path.parts[0]]]) if is_joined(path) else path
            groups[key, tuple(flags_of(command))][path] = command["directory"]
    commands = []
    for number, ((key, flags), paths) in enumerate(sorted(groups.items())):
        source, places = ROOT / next(iter(paths)), None
        if len(paths) > 1:
            source = folder / f"{'_'.join(key.parts)}_{number}.cpp"
            places = join(paths, source)
        commands.append({"directory": next(iter(paths.values())), "file": str(source),
                         "arguments": [*flags, f"-I{ROOT / key}", "-c", str(source)]})
        yield str(source), places
    (folder / "compile_commands.json").write_text(json.dumps(commands, indent=1))


def check(folder, source, places):
    """Returns what clang-tidy finds, with places in the tree; empty if it finds nothing."""
    done = subprocess.run(["clang-tidy", "-p", folder, f"--config-file={ROOT / '.clang-tidy'}", "--quiet", CHECKS, *STEPS, source],
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    if done.returncode == 0:
        return ""
    found = done.stdout or done.stderr
    return re.sub(re.escape(source) + r":(\d+)", lambda match: places[int(match[1])], found) if places else found


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    folder = build / "tidy"
    folder.mkdir(exist_ok=True)
    sources = list(prepare(build, folder))
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        found = [text for text in pool.map(lambda each: check(folder, *each), sources) if text]
    print(*found, sep="\n", end="", file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
