#!/usr/bin/env python3
"""The page of words is the one that the tables make, and no word is listed under a count of operands that is not its own."""
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PAGE = ROOT / "docs" / "words.md"
COUNTS = {"one operand": "1", "two operands": "2"}


def misplaced():
    title = ""
    for line in PAGE.read_text(encoding="utf-8").splitlines():
        if line.startswith("## "):
            title = line[3:]
        row = [cell.strip() for cell in line.replace("\\|", "").split("|")]
        for words, count in COUNTS.items():
            if title.endswith(words) and row[1:2] and row[1].startswith("`") and row[2] != count:
                yield "docs/words.md: %s asks for %s under %r" % (row[1], row[2] or "none", title)


if __name__ == "__main__":
    faults = list(misplaced())
    print(*faults, sep="\n", end="\n" if faults else "")
    outdated = subprocess.call([sys.executable, "-B", ROOT / "tools" / "reference" / "words.py", "--check"])
    sys.exit(1 if faults else outdated)
