#!/usr/bin/env python3
"""The page and the data of words are the ones that the tables make, no word stands under a count of operands that is not
its own, and each private byte has a sign of its own."""
import pathlib
import subprocess
import sys
import unicodedata

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "tools" / "reference"))
import tables  # noqa: E402  pylint: disable=wrong-import-position

PAGE = ROOT / "docs" / "words.md"
NO_KEYWORD = {0xAF, 0xBC}  # the high minus of numbers, the delimiter of comments
COUNTS = {"one operand": "1", "two operands": "2"}


def misplaced():
    title = ""
    for line in PAGE.read_text(encoding="utf-8").splitlines():
        if line.startswith("## "):
            title = line[3:]
        row = [cell.strip() for cell in line.replace("\\|", "").split("|")]
        for words, count in COUNTS.items():
            if title.endswith(words) and row[1:2] and row[1].startswith("`") and row[3] != count:
                yield "docs/words.md: %s asks for %s under %r" % (row[1], row[3] or "none", title)


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
