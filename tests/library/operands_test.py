#!/usr/bin/env python3
"""Every word of the libraries, on operands of all kinds, leaves as many values as its page says, or ends in a message.

    operands_test.py MORVIK_RUN
"""
import itertools
import pathlib
import random
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
ROW = re.compile(r"^\| `((\w+):\w+)` \| `(.*?) ?-- ?(.*?)` \|", re.M)
OPERANDS = ["#NIL", "''", "5", "-2", "'a'", "(3 1 2)", "'ab c'", "(1 2 3 4 5 6)[3 2]", "(2 1 1 3)[2 2]", "(1 2 3 4 5 6 7 8)[2 2 2]",
            "((1 2) 'ab' 3)", "('ab' 'c')", "(0)[3 0]", "7 1 RESHAPE", "1i2", "1j0", "(2024 2 29)", "inf"]
FUNCTIONS = {"f": ": + ;", "g": ": SUM ;"}
FILES = ("csv:read", "csv:write")
MOST, SEED = 200, 20261122  # cases of a word


def cases(words):
    """Texts that leave the height of the stack, which holds one value beneath, and how many values are to be on it."""
    draw = random.Random(SEED)
    for word, taken, left in words:
        kinds = taken.split()
        choices = list(itertools.product(OPERANDS, repeat=sum(kind not in FUNCTIONS for kind in kinds)))
        for operands in draw.sample(choices, min(MOST, len(choices))):
            put = iter(operands)
            values = " ".join(FUNCTIONS.get(kind) or next(put) for kind in kinds)
            yield "CLEAR 0 %s %s COUNTSTACK '<' TELL TELL '>' TELL ." % (values, word), len(left.split()) + 1


def main():
    runner = str(pathlib.Path(sys.argv[1]).resolve())
    words = [(word, taken, left) for word, _, taken, left in ROW.findall((ROOT / "docs" / "library.md").read_text())
             if word not in FILES]
    tried = list(cases(words))
    with tempfile.TemporaryDirectory(prefix="morvik-") as folder:
        needs = '"NEEDS %s"' % " ".join(path.stem for path in (ROOT / "lib").glob("*.morvik"))
        script = pathlib.Path(folder) / "s.morvik"
        script.write_text("\n".join([needs] + ["'@%d' TELL .\n%s" % (i, text) for i, (text, _) in enumerate(tried)]))
        run = subprocess.run([runner, "-k", script.name], cwd=folder, capture_output=True, timeout=300, check=False,
                             env={"MORVIK_PATH": str(ROOT / "lib")})
    told = run.stderr.decode("latin-1")
    messages = {int(line) for line in re.findall(r"(?:in s\.morvik, line |^s\.morvik:)(\d+)", told, re.M)}
    complaints, silent = [], 0
    found = re.findall(r"@(\d+)((?:(?!@\d).)*)", run.stdout.decode("latin-1"), re.S)
    for number, output in found:
        text, expected = tried[int(number)]
        if 2 * int(number) + 3 in messages:
            continue
        silent += 1
        heights = re.findall(r"<\s*(\d+)\s*>", output)
        if heights != [str(expected)]:
            complaints.append("%s: %s instead of %d" % (text, heights, expected))
    if run.returncode not in (0, 1) or len(found) != len(tried):
        complaints.append("status %d after %d of %d: %s" % (run.returncode, len(found), len(tried), told[-500:]))
    print("\n".join(complaints[:20] + ["%d cases, %d without a message, %d wrong" % (len(found), silent, len(complaints))]))
    return 1 if complaints or len(words) < 50 or 3 * silent < len(tried) else 0


if __name__ == "__main__":
    sys.exit(main())
