#!/usr/bin/env python3
"""The table of peers in docs/performance.md has the rows that are measured, in their order, with their units and goals."""
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = ROOT / "docs" / "performance.md"
sys.path.insert(0, str(ROOT / "bench"))
import programmes  # noqa: E402

HEAD = programmes.HEAD.splitlines()


def faults(lines):
    """What is wrong with the table below its head."""
    if HEAD[0] not in lines:
        return ["no table begins with %s" % HEAD[0]]
    begin = lines.index(HEAD[0])
    shown = []
    for number, text in enumerate(lines[begin:], begin + 1):
        if not text.startswith("|"):
            break
        shown.append((number, [cell.strip() for cell in text.strip("|").split("|")]))
    found = [] if lines[begin + 1] == HEAD[1] else ["%d: the line below the head" % (begin + 2)]
    rows = list(programmes.titles())
    for (number, cells), row in zip(shown[2:], rows):
        if len(cells) != len(programmes.PEERS) + 4 or (cells[0], cells[1], *cells[-2:]) != row:
            found.append("%d: should be the row of %s" % (number, ", ".join(row)))
        elif not cells[2]:
            found.append("%d: no figure of Morvik's" % number)
    if len(shown) - 2 != len(rows):
        found.append("%d rows, where %d are measured" % (len(shown) - 2, len(rows)))
    return found


def planted(lines):
    """Pages that are wrong, each in one place."""
    first = lines.index(HEAD[1]) + 1
    yield lines[:first] + lines[first + 1:]
    yield lines[:first] + [lines[first].replace("4.5", "4.4")] + lines[first + 1:]
    yield lines[:first] + [lines[first].replace("| ns |", "| ms |")] + lines[first + 1:]
    yield [line for line in lines if line != HEAD[0]]


def main():
    lines = PAGE.read_text(encoding="utf-8").splitlines()
    found = ["%s: %s" % (PAGE.relative_to(ROOT), fault) for fault in faults(lines)]
    if not found:
        found = ["the rule passes over a page with a fault" for page in planted(lines) if not faults(page)]
    print(*found, sep="\n", end="\n" if found else "")
    return bool(found)


if __name__ == "__main__":
    sys.exit(main())
