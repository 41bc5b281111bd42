#!/usr/bin/env python3
"""Rules about the sources that no compiler checks."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SOURCES = ROOT / "src"
MAP = ROOT / "docs" / "architecture.md"
# From the ground up: a room includes headers of its own floor and of lower ones. The .def tables are open to all.
FLOORS = ["spaces", "diagnostics", "coprocessor", "arithmetic", "operators", "frontend", "files", "machine", "driver"]
INCLUDE = re.compile(r'^#include "(\w+)/\w+\.h"', re.M)
COMMENT = re.compile(r"//.*")
LONGEST_FILE = 700
# The landings of a jump, and the jump.
COUNTED = {r"\bsetjmp\s*\(": 2, r"\blongjmp\s*\(": 1}
BANNED = {
    r"\b(?:try|catch|throw)\b\s*[({\w]": "exceptions are off",
    r"\bstd::(?:vector|string|map|unordered_map|function|unique_ptr|shared_ptr)\b": "a jump would leak it",
    r"#include <(?:iostream|fstream|sstream|regex)>": "costs time at the start of the process",
}

# Nothing in a recount can fail, and so nothing jumps out of it.
JUMPLESS = {"src/spaces/recount.h", "src/spaces/recount.cpp"}


def faults():
    counts = dict.fromkeys(COUNTED, 0)
    for path in sorted(SOURCES.rglob("*")):
        if path.suffix not in (".cpp", ".h", ".def"):
            continue
        name = path.relative_to(ROOT)
        text = path.read_text(encoding="utf-8")
        if not text.startswith("//"):
            yield "%s: does not open with what it is for" % name
        if text.count("\n") > LONGEST_FILE and path.suffix != ".def":
            yield "%s: more than %d lines" % (name, LONGEST_FILE)
        if path.suffix == ".h" and "#pragma once" not in text:
            yield "%s: no #pragma once" % name
        room = path.relative_to(SOURCES).parts[0]
        for other in INCLUDE.findall(text):
            if FLOORS.index(other) > FLOORS.index(room):
                yield "%s: includes %s, a higher floor" % (name, other)
        code = COMMENT.sub("", text)
        for pattern in counts:
            counts[pattern] += len(re.findall(pattern, code))
        for pattern, why in BANNED.items():
            if str(name) in JUMPLESS:
                break
            for found in re.findall(pattern, code):
                yield "%s: %s: %s" % (name, found, why)
    for pattern, count in counts.items():
        if count != COUNTED[pattern]:
            yield "%s stands %d times, not %d" % (pattern, count, COUNTED[pattern])
    yield from faultsofmap()


def faultsofmap():
    """Does the map name each file in its room, and no other in its first column?"""
    rooms = re.split(r"^`src/(\w+)`\n", MAP.read_text(encoding="utf-8").split("## File by file")[1], flags=re.M)[1:]
    rooms = dict(zip(rooms[::2], rooms[1::2]))
    for room in FLOORS:
        rows = re.findall(r"^\|(.*?)\|(.*)\|$", rooms.get(room, ""), re.M)
        first, all_names = (set(re.findall(r"`(\w+)(?:\.def)?`", " ".join(parts)))
                            for parts in ([row[0] for row in rows], [" ".join(row) for row in rows]))
        files = {path.stem for path in (SOURCES / room).iterdir()}
        for name in sorted(files - all_names):
            yield "docs/architecture.md: %s/%s is not named" % (room, name)
        for name in sorted(first - files):
            yield "docs/architecture.md: there is no %s/%s" % (room, name)


def main():
    found = list(faults())
    for fault in found:
        print(fault)
    print("%d faults" % len(found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
