#!/usr/bin/env python3
"""What each word takes: every word over operands of each kind, and the messages that come of it.

    run.py [--update] BINARY [WORD]...

The findings are tests/words/taken.txt, and from them docs/words.md says what a word takes and reports. A kind counts as
taken where some value of it goes without a message and the word leaves as many values as its stack effect says. Without
--update the findings are compared; with it they are written, and the difference is to be read before it is committed. With
words named, only theirs are shown.
"""
import argparse
import concurrent.futures
import difflib
import itertools
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools" / "reference"))
import tables  # noqa: E402
import words  # noqa: E402
from operands import KINDS, KNOWN, MORE, ONE, TAMED  # noqa: E402

TARGET = pathlib.Path(__file__).resolve().parent / "taken.txt"
OPENING = """# What words take, and the messages that they raise; made by tests/words/run.py, and read by tools/reference/words.py.
# A word; a line for the kinds that its operands may have together, from the deepest to the top; a line for the messages.
"""
SECONDS = 300
BELOW = 77  # lies under the operands, and is to stay there
MESSAGES = {row.text.split("\n")[0]: row.number for row in tables.messages()}
ALONE = {"READ", "LOAD", "WIPE"}


def values(word, kind):
    return [ONE[kind]] if word.operands() > 2 else TAMED.get(word.title, {}).get(kind, KINDS[kind])


def trials(word):
    """(kinds, text) for each trial; the kinds are empty where a text is only to raise a message."""
    count = word.operands()
    if count:
        yield (), " ".join(["CLEAR", *["1"] * (count - 1), word.written()]) + " ."
        for kinds in itertools.product(KINDS, repeat=count):
            for operands in itertools.product(*(values(word, kind) for kind in kinds)):
                yield kinds, "%s %s ." % (" ".join(operands), word.written())
    for text in MORE.get(word.title, ()):
        yield (), text if "\n" in text else text + " ."


def perform(binary, cases):
    """Runs texts one after another in one process. Returns what each prints, and the height of the stack after it."""
    source = "".join("CLEAR '<<%d' PRINT .\n%s %d %s\nCOUNTSTACK '<<height' SWAP FORMTEXT , PRINT .\n" % (number, KNOWN, BELOW, text)
                     for number, (_, text) in enumerate(cases))
    with tempfile.TemporaryDirectory(prefix="morvik-") as scratch:
        (pathlib.Path(scratch) / "f1").write_text("1 2 3 .\n")
        variables = {name: os.environ[name] for name in ("PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS") if name in os.environ}
        variables.update({"HOME": scratch, "LC_ALL": "C", "$EDITOR": "true"})
        try:
            run = subprocess.run([binary, "-q"], input=source.encode("latin-1"), stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                 cwd=scratch, env=variables, timeout=SECONDS, check=False)
        except subprocess.TimeoutExpired:
            sys.exit("%r and the texts after it do not end" % cases[0][1])
    if run.returncode:
        sys.exit("%r: status %d" % (cases[0][1], run.returncode))
    for number, shown in enumerate(re.split(r"<<\d+\n", run.stdout.decode("latin-1"))[1:]):
        shown, _, height = shown.partition("<<height")
        yield cases[number], shown, int(height.split()[0]) if height.strip() else -1


def reported(shown):
    return {MESSAGES[line] for line in shown.split("\n") if line in MESSAGES}


class Findings:
    def __init__(self, word):
        self.word, self.taken, self.messages, self.passed = word, set(), set(), set()

    def add(self, kinds, shown, height):
        found = reported(shown)
        self.messages |= found
        if not kinds or found:
            return
        left = self.word.results()
        if left is None or height == 1 + left:
            self.taken.add(kinds)
        else:
            self.passed.add(kinds)

    def lines(self):
        """The findings as lines of the file: kinds that go with the same ones are on one line."""
        yield self.word.title
        for group in grouped(self.taken):
            yield "  " + " | ".join(" ".join(kinds) for kinds in group)
        passed = [kinds[0] for kinds in sorted(self.passed - self.taken, key=lambda kinds: list(KINDS).index(kinds[0]))]
        if passed:
            yield "  passed " + " ".join(passed)
        if self.messages:
            yield "  : " + " ".join(map(str, sorted(self.messages)))


def grouped(taken):
    """Tuples of kinds as products of lists of kinds, so that few lines say all."""
    order = list(KINDS)
    if not taken:
        return []
    if len(next(iter(taken))) == 1:
        return [[sorted((kind for kind, in taken), key=order.index)]]
    rests = {}
    for first in order:
        rest = frozenset(kinds[1:] for kinds in taken if kinds[0] == first)
        if rest:
            rests.setdefault(rest, []).append(first)
    return [[firsts, *group] for rest, firsts in rests.items() for group in grouped(rest)]


def findings(binary, word):
    found, cases = Findings(word), list(trials(word))
    runs = [[case] for case in cases] if word.title in ALONE else [cases] if cases else []
    for run in runs:
        for (kinds, _), shown, height in perform(binary, run):
            found.add(kinds, shown, height)
    return "\n".join(found.lines()) + "\n"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--update", action="store_true")
    parser.add_argument("binary")
    parser.add_argument("words", nargs="*")
    options = parser.parse_args()
    binary = os.path.abspath(options.binary)
    chosen = [word for word in words.words() if not word.happens and (not options.words or word.title in options.words)]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        found = list(pool.map(lambda word: findings(binary, word), chosen))
    made = OPENING + "".join(found)
    if options.words:
        print("".join(found), end="")
    elif options.update:
        TARGET.write_text(made)
    elif made != TARGET.read_text():
        print("\n".join(difflib.unified_diff(TARGET.read_text().split("\n"), made.split("\n"), "taken.txt", "run", lineterm="")))
        return 1
    print("%d words" % len(chosen))
    return 0


if __name__ == "__main__":
    sys.exit(main())
