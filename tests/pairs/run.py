#!/usr/bin/env python3
"""Puts every word of the vocabulary over pairs of odd operands:  run.py [--whole] [--seed N] BINARY [WORD]...

Whatever comes of a text, the process ends with status 0 and its closing line, and reports no fault; in the checking
build status 99 is a leak, in the build with sanitizers 98 one of their reports. Without --whole each word meets a few
pairs, drawn anew for each word from a generator with a seed. All texts of a word share a process; where that fails they
are taken apart until single texts are to blame.
"""
import argparse
import concurrent.futures
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools" / "reference"))
import tables  # noqa: E402
from operands import OPERANDS  # noqa: E402

CLOSING = re.compile(rb"--- Spent: \d\d:\d\d:\d\d\.\d{6} ---\n\n$")
FAULTS = (b"SEGMENTATION VIOLATION", b"SERIOUS INTERNAL ERROR", b"UNKNOWN SIGNAL", b"Floating point exception",
          b"Counted block", b"runtime error")
IMPOSSIBLE = b"991 - "  # which only a sum of members gives, as described
SUMS = (b"SUM", b"SUMLASTAXIS", b"+ REDUCE", b"+ REDUCELASTAXIS")
SAMPLED = 12  # pairs for each word
SPOKEN = 3    # texts to blame that are shown for each word
SECONDS = 120

# What is waited for, or read from the input that follows, or ends the run: each text has a process of its own.
ALONE = {"STEP", "RUN", "BREAK", "ENDPROCESS", "INPUT", "QUOTEDIN", "EDIT"}
AFTER = b"7 .\n'quoted'\n"
# Operands that have no end under a word: a number of seconds, a Point to jump back to, a count of rounds.
ENDLESS = {"SLEEP": re.compile(r"[1-9T#]"), "JUMP": re.compile(r"^\W*([1-9]|T|#IO)|%here"),
           "LOOP": re.compile(r"[0-9]{10}")}


def vocabulary():
    """One spelling of each row, in bytes, with the name of its instruction; and folds, which need a word ahead."""
    words = []
    for row in tables.keywords():
        word = ([s for s in row.spellings if s.isalnum()] or row.spellings)[-1]
        for ahead in ((b"+", b"MIN", b"^", b"=", b"*") if row.kind == "REWRITE" else (b"",)):
            words.append((row.instruction if row.kind not in ("RUN", "BREAK") else row.kind, (ahead + b" " + word).strip()))
    words.append(("MASK", b"WRAP MASK"))
    words.append(("MASK", b"REFLECT MASK"))
    return words


def forms(word, left, right):
    """The word over both; over what names hold, twice; and called for each element."""
    parts = {b"L": left.encode(), b"R": right.encode(), b"W": word}
    for form in (b"CLEAR L R W .\n", b"CLEAR L @p SET R @q SET p q W CLEAR p q W CLEAR p q .\n",
                 b"CLEAR L MONADIC R W ; EACH .\n"):
        yield re.sub(rb"\b[LRW]\b", lambda found: parts[found.group()], form)


def texts(instruction, word, pairs):
    for left, right in pairs:
        endless = ENDLESS.get(instruction)
        if endless and (endless.search(left) or endless.search(right)):
            continue
        if instruction in ALONE:
            yield next(forms(word, left, right)) + AFTER
        else:
            yield from forms(word, left, right)


def perform(binary, text):
    """The exit status of a run of the text, and its streams."""
    with tempfile.TemporaryDirectory(prefix="morvik-") as scratch:
        (pathlib.Path(scratch) / "f1").write_text("1 2 3 .\n")
        variables = {name: os.environ[name] for name in ("PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS") if name in os.environ}
        variables.update({"HOME": scratch, "LC_ALL": "C", "$EDITOR": "true"})
        run = subprocess.run([binary, "-q"], input=text, capture_output=True, cwd=scratch, env=variables,
                             timeout=SECONDS, check=False)
    return run.returncode, run.stdout, run.stderr


def faultof(binary, text, faults):
    """What is wrong with a run of the text, or nothing."""
    try:
        status, out, errors = perform(binary, text)
    except subprocess.TimeoutExpired:
        return "did not end"
    said = [fault.decode() for fault in faults if fault in out or fault in errors]
    if status == 0 and CLOSING.search(out) and not said:
        return ""
    closing = "" if CLOSING.search(out) else ", no closing line"
    return "status %d%s %s: %s" % (status, closing, " ".join(said), errors[-200:].decode("latin-1"))


def blame(binary, lines, faults):
    """Single texts that fail, each with its fault; all of them where they fail only together."""
    fault = faultof(binary, b"".join(lines), faults)
    if not fault:
        return []
    if len(lines) == 1:
        return [(lines[0], fault)]
    half = len(lines) // 2
    found = blame(binary, lines[:half], faults)
    if len(found) < SPOKEN:
        found += blame(binary, lines[half:], faults)
    return found or [(b"".join(lines), fault)]


def badoperands(binary):
    """Operands that are not the one value that they are meant to be."""
    for operand in OPERANDS:
        text = b"CLEAR 5 %s COUNTSTACK .\n" % operand.encode()
        status, out, errors = perform(binary, text)
        if status != 0 or errors or out.split(b"---")[0].split() != [b"2"]:
            yield "%s is no operand: %r" % (operand, errors or out)


def check(binary, instruction, word, pairs):
    lines = list(texts(instruction, word, pairs))
    runs = [[line] for line in lines] if instruction in ALONE else [lines] if lines else []
    faults = FAULTS if word in SUMS else (*FAULTS, IMPOSSIBLE)
    found = []
    for run in runs:
        if len(found) < SPOKEN:
            found += blame(binary, run, faults)
    return len(lines), found[:SPOKEN]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--whole", action="store_true")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("binary")
    parser.add_argument("words", nargs="*")
    options = parser.parse_args()
    binary = os.path.abspath(options.binary)
    generator = random.Random(options.seed)
    every = [(left, right) for left in OPERANDS for right in OPERANDS]
    jobs = []
    for instruction, word in vocabulary():
        pairs = every if options.whole else generator.sample(every, SAMPLED)
        if not options.words or word.decode("latin-1") in options.words:
            jobs.append((instruction, word, pairs))
    tried, failed = 0, 0
    for fault in badoperands(binary):
        failed += 1
        print(fault)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for job, (count, found) in zip(jobs, pool.map(lambda job: check(binary, *job), jobs)):
            tried += count
            failed += bool(found)
            for text, fault in found:
                print("FAILED %s: %r\n    %s" % (job[1].decode("latin-1"), text[-400:], " ".join(fault.split())), flush=True)
    print("%d words, %d texts, %d words failed" % (len(jobs), tried, failed))
    return 1 if failed or not tried else 0


if __name__ == "__main__":
    sys.exit(main())
