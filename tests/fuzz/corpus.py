#!/usr/bin/env python3
"""The inputs that the harness keeps, in one file of text:  corpus.py unpack FOLDER, corpus.py pack FOLDER

A line is an input, its bytes escaped as Python writes them. Packing takes what has a name of the engine's or of unpacking,
so that the texts of other tests stay out, and keeps the shortest, as far as the bound reaches.
"""
import ast
import hashlib
import pathlib
import re
import sys

KEPT = pathlib.Path(__file__).resolve().parent / "corpus.txt"
MOST_BYTES = 120000
NAME = re.compile(r"[0-9a-f]{20,}$")


def unpack(folder):
    for line in KEPT.read_text(encoding="ascii").splitlines():
        data = ast.literal_eval(line)
        (folder / hashlib.sha256(data).hexdigest()[:20]).write_bytes(data)


def pack(folder):
    lines = sorted((repr(path.read_bytes()) for path in folder.iterdir() if NAME.match(path.name)), key=lambda line: (len(line), line))
    kept, size = [], 0
    for line in lines:
        size += len(line) + 1
        if size > MOST_BYTES:
            break
        kept.append(line + "\n")
    KEPT.write_text("".join(sorted(kept)), encoding="ascii")
    print("%d of %d inputs kept" % (len(kept), len(lines)))


if __name__ == "__main__":
    {"unpack": unpack, "pack": pack}[sys.argv[1]](pathlib.Path(sys.argv[2]))
