#!/usr/bin/env python3
"""The page and the data of words are the ones that the tables make, no word stands under a count of operands that is not
its own, and each private byte has a sign of its own."""
import pathlib
import re
import subprocess
import sys
import unicodedata

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "tools" / "reference"))
import tables  # noqa: E402  pylint: disable=wrong-import-position

PAGE = ROOT / "docs" / "words.md"
NO_KEYWORD = {0xAF, 0xBC}  # the high minus of numbers, the delimiter of comments
COUNTS = {"one operand": 1, "two operands": 2}
EFFECT = re.compile("`([^`]*) ?--[^`]*` &nbsp;")


def misplaced():
    section, word, seen = "", "", 0
    for line in PAGE.read_text(encoding="utf-8").splitlines():
        if line.startswith("## "):
            section = line[3:]
        elif line.startswith("### "):
            word = line[4:]
        effect = EFFECT.match(line)
        for words, count in COUNTS.items():
            if effect and section.endswith(words):
                seen += 1
                if len(effect[1].split()) != count:
                    yield "docs/words.md: %s takes %s under %r" % (word, effect[1], section)
    if not seen:
        yield "docs/words.md: no words under a count of operands"


def badsigns():
    """Signs are there for the bytes that words are spelled with, differ, take one cell, and are typed in one way each."""
    rows, keywords = tables.glyphs(), tables.keywords()
    used = {byte for row in keywords for spelling in row.spellings for byte in spelling if byte > 127} | NO_KEYWORD
    for byte in used ^ {row.byte for row in rows}:
        yield "glyphs.def: byte %02X has a sign or is used, not both" % byte
    spellings = {spelling for row in keywords for spelling in row.spellings} | {b'"', b""}
    for row in rows:
        cells = unicodedata.east_asian_width(row.sign) not in "WF" and unicodedata.category(row.sign)[0] in "SPL"
        if ord(row.sign) < 128 or not cells:
            yield "glyphs.def: %s takes no single cell" % row.sign
        if row.twin not in spellings:
            yield "glyphs.def: %s is no word" % row.twin
    for what in ("byte", "sign", "typed"):
        if len({getattr(row, what) for row in rows}) != len(rows):
            yield "glyphs.def: two rows have the same %s" % what


if __name__ == "__main__":
    faults = [*misplaced(), *badsigns()]
    print(*faults, sep="\n", end="\n" if faults else "")
    outdated = subprocess.call([sys.executable, "-B", ROOT / "tools" / "reference" / "words.py", "--check"])
    sys.exit(1 if faults else outdated)
