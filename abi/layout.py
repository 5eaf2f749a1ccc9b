"""Prints the memory layout of the classes in the public headers: abi/layout.py LIBRARY... HEADER...

For each class, prints the size, the offsets of the bases and members, and the slots of the virtual
operations that the class declares. abidw reads all of this from the compiler's debug information. A
base class TDriver<...> is not shown, because it only implements what all drivers share. Its own
bases and slots are shown as if the derived class itself had them.
"""

import re
import subprocess
import sys
import xml.etree.ElementTree as xml


PLUMBING = "TDriver<"


def type_names(root):
    """Returns a function from a type's identifier to its spelling."""
    nodes = {node.get("id"): node for node in root.iter() if node.get("id")}

    def name(identifier):
        node = nodes.get(identifier)
        if node is None:
            return "?"
        inner = node.get("type-id")
        if node.tag == "qualified-type-def":
            words = [word for word in ("const", "volatile") if node.get(word) == "yes"]
            target = name(inner)
            return " ".join([target, *words]) if target.endswith("*") else " ".join([*words, target])
        if node.tag == "pointer-type-def":
            return name(inner) + "*"
        if node.tag == "reference-type-def":
            return name(inner) + ("&" if node.get("kind") == "lvalue" else "&&")
        if node.tag == "array-type-def":
            return name(inner) + "".join(f"[{sub.get('length')}]" for sub in node.findall("subrange"))
        return node.get("name", "?")

    return name


def classes(root):
    """Yields each class that has a definition, with its full name."""

    def walk(node, scope):
        for child in node:
            if child.tag in ("namespace-decl", "abi-instr", "abi-corpus"):
                yield from walk(child, scope + ([child.get("name")] if child.tag == "namespace-decl" else []))
            elif child.tag == "class-decl":
                full = scope + [child.get("name")]
                if child.get("is-declaration-only") != "yes" and child.get("size-in-bits"):
                    yield "::".join(full), child
                for member in child.findall("member-type"):
                    yield from walk(member, full)

    return walk(root, [])


def parts(node, name, plumbing, start=0):
    """Returns bases, members and slots of a class that is `start` bytes into the class shown."""
    lines = set()
    for base in node.findall("base-class"):
        offset = start + int(base.get("layout-offset-in-bits")) // 8
        spelling = name(base.get("type-id"))
        if spelling in plumbing:
            lines |= parts(plumbing[spelling], name, plumbing, offset)
        else:
            lines.add((0, offset, "base    ", spelling))
    for member in node.findall("data-member"):
        if member.get("static") != "yes":
            decl = member.find("var-decl")
            lines.add((1, start + int(member.get("layout-offset-in-bits")) // 8, "member  ",
                       f"{decl.get('name')}: {name(decl.get('type-id'))}"))
    for member in node.findall("member-function"):
        decl = member.find("function-decl")
        if member.get("vtable-offset") and member.get("destructor") != "yes":
            takes = ", ".join(name(p.get("type-id")) for p in decl.findall("parameter") if p.get("is-artificial") != "yes")
            const = " const" if member.get("const") == "yes" else ""
            lines.add((2, int(member.get("vtable-offset")), "slot    ",
                       f"{decl.get('name')}({takes}){const}: {name(decl.find('return').get('type-id'))}"))
    return lines


def describe(lines):
    return [f"    {kind}{place:4}  {what}" for _, place, kind, what in sorted(lines)]


def main(files):
    wanted, shown = set(), {}
    for header in [file for file in files if file.endswith(".h")]:
        with open(header, encoding="utf-8") as file:
            text = file.read()
        # If a header in include/ exports nothing, its classes are compiled into the client and are
        # not part of the binary interface.
        if "BOARD_API" in text or not header.startswith("include/"):
            wanted.update(re.findall(r"^ *(?:class|struct) (?:BOARD_API )?(\w+)(?: : .*)? \{$", text, re.MULTILINE))
    for library in [file for file in files if not file.endswith(".h")]:
        text = subprocess.run(["abidw", "--no-show-locs", library], stdout=subprocess.PIPE, check=True).stdout
        root = xml.fromstring(text)
        name = type_names(root)
        plumbing = {full: node for full, node in classes(root) if full.startswith(PLUMBING)}
        for full, node in classes(root):
            if full not in plumbing and not full.startswith("std::") and re.sub("<.*>", "", full).split("::")[-1] in wanted:
                lines = [f"{full}: {int(node.get('size-in-bits')) // 8} bytes", *describe(parts(node, name, plumbing))]
                shown[full] = max(shown.get(full, []), lines, key=len)
    for full in sorted(shown):
        print("\n".join(shown[full]) + "\n")


if __name__ == "__main__":
    main(sys.argv[1:])
