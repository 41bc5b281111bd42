#!/usr/bin/env python3
"""Values nested deeper than the process stack is: they are made, held, shared and given up like any other."""
import os
import resource
import subprocess
import sys
import tempfile
import unittest

BINARY = os.path.abspath(sys.argv.pop(1))
SANITIZED = os.environ.get("MORVIK_SANITIZED") == "1"
MEBIBYTE = 1 << 20
# The second of two members leads down in one value, the first in the other.
LAST = b"(1 2) %d : (5 6) ENCLOSE CATENATE ENCLOSE ; REPEAT @v SET .\n"
FIRST = b"(1 2) %d : (5 6) ENCLOSE SWAP CATENATE ENCLOSE ; REPEAT @v SET .\n"
STORAGE = b"\n27 - out of main storage.\n"


def smallstack():
    limit = 8 * MEBIBYTE if SANITIZED else 2 * MEBIBYTE
    resource.setrlimit(resource.RLIMIT_STACK, (limit, limit))


def run(text, prepare=None):
    with tempfile.TemporaryDirectory() as folder:
        return subprocess.run([BINARY, "-q"], input=text, capture_output=True, preexec_fn=prepare, timeout=300,
                              check=False, cwd=folder)


class Nesting(unittest.TestCase):
    def check(self, text, out=None, err=b"", prepare=smallstack):
        for make in (LAST, FIRST):
            ended = run(make % 40000 + text + b" .\nCLEAR v DUP @w SET SHAPE PRINT DISCARD WIPE 77 .\n", prepare)
            self.assertEqual(ended.stderr, err, text)
            self.assertIn(b"\n 1\n\n\n\n 77\n--- Spent: ", ended.stdout.replace(b" 1\n\n\n", b"\n 1\n\n\n"), text)
            if out is not None:
                self.assertIn(out, ended.stdout, text)
            self.assertEqual(ended.returncode, 0, text)

    def test_what_goes_down_with_a_list_of_its_own(self):
        self.check(b"v v MATCH", b"\n\n 1")
        self.check(b"v v EXACTMATCH", b"\n\n 1")
        self.check(b"v DUP ENASCII DEASCII EXACTMATCH", b"\n\n 1")
        self.check(b"v ENCAPSULATE DISCARD")
        self.check(b"v ENLIST SHAPE", b"\n\n 80002\n")
        self.check(b"v REVERSE REST DISCARD")
        self.check(b"v MONADIC DISCARD 1 ; EACH", b"\n\n 1\n")
        self.check(b"v DEPTH", b"\n\n 32767")

    def test_what_goes_down_the_process_stack(self):
        for words in (b"v v +", b"v NEGATIVE", b"1 v *", b"v FORMTEXT", b"v DISASSEMBLE", b"v PRINT", b"v", b"v 'f' WRITE"):
            self.check(words, err=STORAGE)

    @unittest.skipIf(SANITIZED, "takes too long there")
    def test_two_million_levels(self):
        for make in (LAST, FIRST):
            ended = run(make % 2000000 + b"v v EXACTMATCH v DISCARD v ENASCII @w SET WIPE .\nCLEAR 77 .\n")
            self.assertEqual(ended.stderr, b"")
            self.assertIn(b"\n\n 1\n\n 77\n--- Spent: ", ended.stdout)
            self.assertEqual(ended.returncode, 0)


if __name__ == "__main__":
    unittest.main()
