#!/usr/bin/env python3
"""The version stands in project() of CMakeLists.txt alone. What tests expect of a run may name it, and pictures show it."""
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
VERSION = subprocess.run([ROOT / "tools" / "version"], capture_output=True, text=True, check=True).stdout.strip()
# By itself in quotes, behind the name of a program, or behind the word; in three parts too.
SECOND = re.compile(r"""["']V["']|\bmorvik[\w-]*[ _=-]V|\bversion["']?[ :=(]+["']?V""".replace("V", r"%s(?:\.0)?(?![\d.]*\d)")
                    .replace("%s", re.escape(VERSION)), re.IGNORECASE)
NOT_OURS = re.compile(r"build|__pycache__|\.(?!ci$)")
PLANTED = ['return "%s";', "'%s.0'", '"Morvik %s"', "morvik-run %s", 'VERSION "%s"', '"version": "%s.0"', "Version: %s", "morvik_%s-1"]
INNOCENT = ["1 %s 2", "Morvik [1]> CLEAR 0.3 %s OR .", "if chance < %s:", '"1%s"', '"%s5"', "version %s.1"]


def files():
    for folder, inner, names in os.walk(ROOT):
        inner[:] = sorted(name for name in inner if not NOT_OURS.match(name) and name != "transcripts")
        for path in (pathlib.Path(folder, name) for name in sorted(names)):
            if path.is_file() and path.suffix != ".svg":
                yield path.relative_to(ROOT), path.read_bytes().decode("utf-8", "replace")


def faults():
    if not re.fullmatch(r"\d+(\.\d+){1,2}", VERSION):
        yield "CMakeLists.txt: no version: %r" % VERSION
        return
    for line in PLANTED:
        if not SECOND.search(line % VERSION):
            yield "the rule passes over: " + line % VERSION
    for line in INNOCENT:
        if SECOND.search(line % VERSION):
            yield "the rule complains of: " + line % VERSION
    for name, text in files():
        for number, line in enumerate(text.splitlines(), 1):
            if SECOND.search(line) and not line.startswith("project(Morvik VERSION "):
                yield "%s:%d: a second version: %s" % (name, number, line.strip())


if __name__ == "__main__":
    found = list(faults())
    print(*found, sep="\n", end="\n" if found else "")
    sys.exit(bool(found))
