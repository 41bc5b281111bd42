#!/usr/bin/env python3
"""Interrupts in the middle of calls, loops and texts: each is taken, and what was there before is there after it."""
import os
import pathlib
import select
import signal
import subprocess
import sys
import tempfile
import time
import unittest

BINARY = os.path.abspath(sys.argv.pop(1))
PATIENCE = 60
TAKEN = "\n** User interrupt. **\n\nException processing:...\n-- - Discarding the bad TOS value...\n"
# What is repeated without end. It leaves nothing.
BODIES = {
    "nothing": "",
    "values": "MARK 1 'text' (1 2 3) CLEARTOMARK DISCARD",
    "a context": "NEWCONTEXT 5 @$z SET $z DISCARD",
    "a context in a call": ": NEWCONTEXT NEWCONTEXT 5 @$z SET $z DISCARD ; !",
    "a table of its own": ": 5 @.z SET .z DISCARD ; !",
    "locals": "3 'x' VARS 3 DYADIC DISCARD ; ! DISCARD",
    "DIP": "(1 2) (3 4) : (5 6) + 7 DISCARD ; DIP DISCARD DISCARD",
    "LOOP": "(0 0) 100 DYADIC + ; LOOP DISCARD",
    "LOOP in LOOP": "0 9 DYADIC DISCARD 9 DYADIC + ; LOOP ; LOOP DISCARD",
    "EACH": "(1 2 3) MONADIC (1 2) DISCARD 1 + ; EACH DISCARD",
    "a text": "'1 2 + DISCARD' !",
    "texts in a text": "'1 DISCARD . ''2 DISCARD'' ! . 3 DISCARD' !",
    "RESULT": "n 1 + @n ASSIGN MONADIC (1 2) + ; RESULT DISCARD",
    "REEVALUATE": "(1 2) MONADIC (1 2) + ; REEVALUATE DISCARD",
    "YIELD": ": 1 2 : 5 ; YIELD ; ! DISCARD DISCARD DISCARD",
    "OPERATOR": "twice OPERATOR DISCARD",
    "COLLECT": "[. 1 (2 3) : 4 ; @n 'text' ..] DISCARD",
    "ASSEMBLE": "'1 2 : 3 ; +' ASSEMBLE DISASSEMBLE DISCARD",
    "names": "(1 2) @other ASSIGN 'other' AT ASSIGN DISCARD @other FORGET",
    "lists": "VARIABLES DISCARD FUNCTIONS DISCARD",
    "recursion": "200 down ! DISCARD",
    "elements": "(1 2 3)[100000] 1 + DISCARD",
}
BEGINNING = """0 @n SET 7 @_kept SET : 2 * ; @twice SET
MONADIC DUP CHECK : DUP 1 - down ! DISCARD ; ?Y ; @down SET .
"""
ENDING = """COUNTSTACK TELL CLEAR 21 twice ! _kept ..] .
"""


class Session:
    def __init__(self, folder=None):
        self.process = subprocess.Popen([BINARY, "-q"], cwd=folder, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, text=True, bufsize=0)

    def say(self, text):
        self.process.stdin.write(text)

    def until(self, last):
        """Reads what is printed up to the last of it."""
        output, seen = self.process.stdout.fileno(), ""
        while not seen.endswith(last):
            if not select.select([output], [], [], PATIENCE)[0]:
                self.process.kill()
                raise AssertionError("waited for %r, have %r" % (last, seen[-1000:]))
            seen += os.read(output, 65536).decode()

    def interrupt(self):
        time.sleep(0.02)
        self.process.send_signal(signal.SIGINT)

    def end(self):
        out, err = self.process.communicate(timeout=PATIENCE)
        return out, err, self.process.returncode


class Interrupts(unittest.TestCase):
    def test_a_long_literal_that_is_compiled(self):
        # Where it is compiled to its end, there is message 151.
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, "long").write_text("(" + "1 " * 6000000 + ") DISCARD &1 .\n")
            session = Session(folder)
            session.say("1 DISCARD 'on' '' WRITE 'long' READ .\n")
            session.until(" 'on'\n")
            session.interrupt()
            session.until(TAKEN)
            session.say("CLEAR 1 2 + .\nCLEAR '(1 (2 3)) @y SET y' ! .\n")
            out, err, status = session.end()
        self.assertRegex(out, r"\n 3\n\n 1 2 3\n\n\n--- Spent")
        self.assertEqual((err, status), ("", 0))

    def test_members_in_members(self):
        """A few bytes of blocks that are shared, and work without end in what they are members of."""
        space = "(" * 12 + "1 2)" + "[9])" * 11
        for words in ("1 +", "NEGATIVE", "1 ENCLOSE , SUM", "(1 2 3) MONADIC MARK ; MASK"):
            with self.subTest(words):
                session = Session()
                self.addCleanup(session.process.kill)
                session.say("%s 'on' '' WRITE DISCARD %s .\n" % (space, words))
                session.until(" 'on'\n")
                session.interrupt()
                session.say("CLEAR 1 2 + .\n")
                out, err, status = session.end()
                self.assertRegex(out, r"\n\*\* User interrupt\. \*\*\n[^*]*\n 3\n+--- Spent")
                self.assertEqual((err, status), ("", 0))

    def test_each(self):
        for title, body in BODIES.items():
            with self.subTest(title):
                session = Session()
                session.say(BEGINNING)
                session.until("\n-")
                for _ in range(3):
                    session.say("CLEAR 'below' 'lost' 'on' '' WRITE DISCARD 1000000000000 : %s ; REPEAT .\n" % body)
                    session.until(" 'on'\n")
                    session.interrupt()
                    session.until(TAKEN)
                session.say(ENDING)
                out, err, status = session.end()
                self.assertRegex(out, r"^ 2\n\n 42 7\n\n--- Spent")
                self.assertEqual((err, status), ("", 0))


if __name__ == "__main__":
    unittest.main()
