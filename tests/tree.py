#!/usr/bin/env python3
"""Checks the rules that keep the tree readable, and prints each place that breaks one:
- A file includes only files of its own folder or of a lower floor (see FLOORS), and files do not
  include each other in a circle.
- In host/ and tools/, only host/base calls open, close and strerror.
- No .cpp file is included, and each using-declaration in a .cpp file is used.
- A folder has at most a dozen modules (a module is a .h and .cpp pair), a source at most 300 lines.
"""
import collections
import graphlib
import pathlib
import re
import sys

# From top to bottom. Folders on the same floor do not include each other; a subfolder without a
# floor belongs to its parent.
FLOORS = [
    ["tools/boardctl", "tools/boardweb"],
    *([f"host/{room}"] for room in
      ("snapshot", "simulation", "status", "watch", "board", "leds", "button", "descriptor", "devices",
       "profile", "sysfs", "client", "base")),
    ["drivers/kernel", "drivers/boarddescr", "drivers/resource"],
    ["drivers", "services/led", "services/button", "sysinfo"],
    ["include"],
    *([f"framework/{part}"] for part in ("driverkernel", "hwutility", "utility")),
    ["platform"],
]
FLOOR = {folder: len(FLOORS) - number for number, folders in enumerate(FLOORS) for folder in folders}
# Headers in these may be included only from the same top folder. Others use include/ and platform/.
INSIDE = {"drivers", "services", "sysinfo", "framework"}
# May include headers of include/: two of the framework's identifiers name interfaces from there.
MAY_LOOK_UP = {"framework/driverkernel/Identifiers.cpp"}
# May have more modules: programs include public headers by name alone, so all are in one folder.
PUBLIC = {"include", "platform"}
MOST_MODULES = 12
MOST_LINES = 300

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')
USING = re.compile(r"^\s*using (?!namespace\b)[\w:]*::(\w+);", re.MULTILINE)
FILE_CALL = re.compile(r"\bstrerror|(?<!\w)::(?:open|close)\(")

root = pathlib.Path(__file__).resolve().parent.parent
faults = []


def find(name, folder):
    """The path of the header that a source in `folder` includes as `name`; None if there is none."""
    places = [folder, "host", "include", "platform", "tools/boardctl", "tools/boardweb", "drivers", "framework"]
    paths = (root / place / name for place in places)
    return next((path.resolve().relative_to(root).as_posix() for path in paths if path.exists()), None)


def folder_of(path):
    return path.rpartition("/")[0]


def room_of(path):
    """The folder of FLOORS that holds the file, maybe in a subfolder; None if there is none."""
    return next((str(folder) for folder in pathlib.PurePath(path).parents if str(folder) in FLOOR), None)


def check_include(place, source, header):
    here, there = room_of(source), room_of(header)
    if there is None:
        faults.append(f"{place}: includes {header}, whose folder has no floor")
    elif here == there or source in MAY_LOOK_UP:
        return
    elif FLOOR[there] >= FLOOR[here]:
        faults.append(f"{place}: includes {header}, but {there} is not below {here}")
    elif (top := there.split("/")[0]) in INSIDE and top != here.split("/")[0]:
        faults.append(f"{place}: includes {header}, which is internal to {top}")


def check_source(path):
    """Returns the headers that the source includes."""
    headers = []
    if room_of(path) is None:
        faults.append(f"{path}: its folder has no floor; add it to FLOORS in {pathlib.Path(__file__).name}")
        return headers
    text = (root / path).read_text()
    for name in USING.findall(text) if path.endswith(".cpp") else []:  # headers may declare names for others
        if len(re.findall(rf"\b{name}\b", text)) == 1:
            faults.append(f"{path}: 'using {name}' is not used")
    for number, line in enumerate(text.splitlines(), 1):
        place = f"{path}:{number}"
        if match := INCLUDE.match(line):
            if match[1].endswith(".cpp"):
                faults.append(f"{place}: includes a source")
            if header := find(match[1], folder_of(path)):
                check_include(place, path, header)
                headers.append(header)
            else:
                faults.append(f'{place}: includes "{match[1]}", which is not in the tree')
        if path.startswith(("host/", "tools/")) and room_of(path) != "host/base" and (call := FILE_CALL.search(line)):
            faults.append(f"{place}: {call[0].rstrip('(')} belongs in host/base")
    return headers


def sources(*tops):
    return sorted(path.relative_to(root).as_posix() for top in tops
                  for path in (root / top).rglob("*") if path.suffix in (".h", ".cpp"))


def check_sizes(paths):
    modules = collections.defaultdict(set)
    for path in paths:
        modules[folder_of(path)].add(pathlib.Path(path).stem)
        lines = (root / path).read_text().count("\n")
        if lines > MOST_LINES:
            faults.append(f"{path}:{MOST_LINES + 1}: the file has {lines} lines (at most {MOST_LINES})")
    for folder, names in modules.items():
        if len(names) > MOST_MODULES and folder not in PUBLIC:
            faults.append(f"{folder}: has {len(names)} modules (at most {MOST_MODULES})")


def main():
    floors = sources(*sorted({folder.split("/")[0] for folder in FLOOR}))
    graph = {path: check_source(path) for path in floors}
    try:
        graphlib.TopologicalSorter(graph).prepare()
    except graphlib.CycleError as error:
        faults.append(f"{error.args[1][-1]}: is included in a circle: {' <- '.join(error.args[1])}")
    check_sizes([*floors, *sources("tests", "bench", "fuzz", "examples")])
    print("\n".join(faults) or f"{len(floors)} sources keep to the floors", file=sys.stderr if faults else sys.stdout)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
