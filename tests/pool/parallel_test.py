#!/usr/bin/env python3
"""Parallel work gives what serial work gives, to the last bit: the same programmes with and without coprocessors."""
import difflib
import os
import random
import re
import subprocess
import sys
import unittest

import programmes

BINARY = sys.argv.pop(1)
SLOTS = [2, 3, 4, 5, 8, 17]
SHOW = programmes.SHOW
QUICK = os.environ.get("MORVIK_SANITIZED") == "1"
# By hand, for as long as one likes: MORVIK_SESSIONS=2000 parallel_test.py BINARY Parallel.test_sessions_that_fail
SESSIONS = int(os.environ.get("MORVIK_SESSIONS", 10 if QUICK else 60))


def run(text, *options):
    done = subprocess.run([BINARY, "-q", *options], input=text.encode("latin-1"), capture_output=True, timeout=600,
                          check=False)
    spent = re.compile(rb"--- Spent: [0-9:.]+ ---")
    return done.returncode, spent.sub(b"", done.stdout), done.stderr


class Parallel(unittest.TestCase):
    maxDiff = None

    def agree(self, text, slots, threshold):
        """`threshold` None leaves the default."""
        text = ("" if threshold is None else "%d SERIAL .\n" % threshold) + text
        serial, parallel = run(text), run(text, "-c%d" % (slots - 1))
        if serial == parallel:
            return
        for one, other in zip(serial, parallel):
            if one == other or isinstance(one, int):
                continue
            lines = [part.decode("latin-1").splitlines() for part in (one, other)]
            self.fail("%d slots: %d and %d\n" % (slots, serial[0], parallel[0]) +
                      "\n".join(list(difflib.unified_diff(*lines, lineterm="", n=4))[:40]))
        self.fail("%d slots: status %d and %d" % (slots, serial[0], parallel[0]))

    def test_dyadic_instructions(self):
        for i, slots in enumerate(SLOTS[::3] if QUICK else SLOTS):
            with self.subTest(slots=slots):
                turn = None if slots == 4 and not QUICK else i
                self.agree("".join(programmes.dyads(random.Random(i), programmes.DYADIC, turn)), slots, slots)

    def test_monadic_instructions(self):
        for i, slots in enumerate(SLOTS[::3] if QUICK else SLOTS):
            with self.subTest(slots=slots):
                self.agree("".join(programmes.monads(random.Random(100 + i), programmes.MONADIC)), slots, slots)

    def test_counts_around_the_threshold(self):
        for slots in SLOTS:
            gate = slots * 1001
            counts = sorted({slots - 1, slots, slots + 1, gate - 1, gate, gate + 1, gate + slots, gate * 2 + 3,
                             gate * slots, gate * slots + 1})
            with self.subTest(slots=slots):
                text = "".join("CLEAR %d INTERVAL DUP 1.5 * + 2i1 * NEGATIVE DUP 7 + - '' DUMPSTACK .\n" % n
                               for n in counts)
                self.agree(text, slots, None)
                self.agree(text, slots, 1)  # which cannot go below the number of slots

    def test_intervals(self):
        for slots in SLOTS:
            with self.subTest(slots=slots):
                self.agree("".join("CLEAR %s .." % description + SHOW for description in (
                    str(slots), str(slots + 1), str(-7 * slots), "(3 100)", "(100 3)", "(1 30 0.25)", "'az'", "'za'",
                    "(1i1 7i9)", "(1i2j3k4 3i4j5k6)", "(1p0 4p1)", "1i1j1k1l2m2n2o2", "40 .. 50 .. 60", "'abcd'", "2.5")),
                    slots, slots)

    def test_chains(self):
        for seed in range(4 if QUICK else 24):
            r = random.Random(1000 + seed)
            slots = r.choice(SLOTS)
            with self.subTest(seed=seed, slots=slots):
                self.agree(programmes.chain(r, 1000, r.choice([slots + 1, 30, 61])), slots, slots)

    def test_sessions_that_fail(self):
        for seed in range(SESSIONS):
            r = random.Random(2000 + seed)
            slots = r.choice([3, 5])
            with self.subTest(seed=seed, slots=slots):
                self.agree(programmes.failures(r, 12, r.choice([slots + 1, 30, 61])), slots, slots)

    def test_flag_words(self):
        """Who asks the flag word, and not the records, finds a result mixed whose slices hold one kind each."""
        share = 20
        for slots in SLOTS:
            first, rest = share * (slots // 2), share * (slots - slots // 2)
            nested, whole = "(1 2) " * (first - 5), "1 " * 5
            for said, text in (("995 - ", "'%s' (%s) , DUP MAXIMUM !" % ("1" * first, "1 " * rest)),
                               ("995 - ", "(%s) '%s' , DUP MINIMUM !" % ("1 " * first, "1" * rest)),
                               (None, "'%s' DUP MAXIMUM ! COUNTSTACK" % ("1 " * (first + rest))),
                               ("1003 - ", "(%s %s %s) NEGATIVE ENCAPSULATE" % (nested, whole, "2.5 " * rest)),
                               (None, "(%s %s %s) NEGATIVE ENCAPSULATE" % (nested, whole, "1 " * rest))):
                with self.subTest(slots=slots, words=text[-20:]):
                    serial = run(text + SHOW)
                    self.assertEqual(re.findall(rb"\n(\d+ - )", serial[2]), [said.encode()] if said else [], serial[2])
                    self.agree(text + SHOW, slots, first + rest - 1)  # with which the shares are equal

    def test_the_tables_name_all_instructions(self):
        self.assertGreaterEqual(len(programmes.DYADIC), 25)
        self.assertGreaterEqual(len(programmes.MONADIC), 29)


if __name__ == "__main__":
    unittest.main()
