#!/usr/bin/env python3
"""Runs clang-tidy on the sources of some folders, several runs in parallel.

usage: tests/tidy.py BUILD JOBS FOLDER...   (BUILD has a compile_commands.json)
Most of the time that clang-tidy takes for a source goes to the headers that it includes. The sources of a folder
are therefore joined and read as one. Exits with 1 if there are findings.
"""
import collections
import concurrent.futures
import json
import pathlib
import re
import shlex
import subprocess
import sys


def flags_of(entry):
    words = shlex.split(entry["command"])
    start = next(i for i, word in enumerate(words) if word.endswith("clang++")) + 1
    flags, output = words[start:], words.index("-o") - start
    del flags[output:output + 2]
    return tuple(word for word in flags if word not in ("-c", entry["file"]))


def unused_names(path):
    """clang-tidy would miss a name that only another source of the folder uses."""
    text = path.read_text(encoding="utf-8")
    for line in re.finditer(r"^ *using (?:\w+::)+(\w+);", text, re.M):
        if len(re.findall(rf"\b{line[1]}\b", text)) < 2:
            yield f"{path}:{text.count(chr(10), 0, line.start()) + 1}: error: using '{line[1]}' is unused"


def look(build, number, flags, paths):
    """Returns the findings, with the places that the sources have."""
    joined = build / "tidy" / f"{number}.cpp"
    places, text = [], ""
    for path in paths:
        source = path.read_text(encoding="utf-8")
        places += [f"{path}:{line + 1}" for line in range(source.count("\n"))]
        text += source
    joined.write_text(text, encoding="utf-8")
    done = subprocess.run(["clang-tidy", "--quiet", joined, "--", *flags, f"-iquote{paths[0].parent}"],
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    findings = [unused for path in paths for unused in unused_names(path)]
    if done.returncode != 0:
        findings.append(re.sub(rf"{re.escape(str(joined))}:(\d+)", lambda place: places[int(place[1]) - 1], done.stdout))
    return findings


def main():
    build, jobs, root = pathlib.Path(sys.argv[1]).absolute(), int(sys.argv[2]), pathlib.Path.cwd()
    groups = collections.defaultdict(set)
    with open(build / "compile_commands.json", encoding="utf-8") as file:
        for entry in json.load(file):
            path = pathlib.Path(entry["file"])
            if path.is_relative_to(root) and path.relative_to(root).parts[0] in sys.argv[3:]:
                groups[path.parent, flags_of(entry)].add(path)
    if not groups:
        raise SystemExit(f"tidy: {build} has no sources of these folders")
    (build / "tidy").mkdir(exist_ok=True)
    # The largest first, so that none is left alone at the end.
    largest = sorted(groups.items(), key=lambda group: -sum(path.stat().st_size for path in group[1]))
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        runs = [pool.submit(look, build, number, flags, sorted(paths))
                for number, ((_, flags), paths) in enumerate(largest)]
    findings = [finding for run in runs for finding in run.result()]
    print(*findings, sep="\n", end="")
    return 1 if findings else 0


sys.exit(main())
